// The carousel: from the payload to its first panel, and from panel to panel. 360 points at two pixels each.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <memory>
#include <stdexcept>
#include <string>

#include "QXExtensionSDK/content/CarouselViewController.h"
#include "QXExtensionSDK/content/VTQXNotificationViewController.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/ui/Application.h"
#include "QXPlatform/ui/ContentExtensionHost.h"

namespace {

constexpr int kWidth = 360;
constexpr double kScale = 2;

std::shared_ptr<const QXPlatform::UNNotificationRequest> makeRequest(std::int64_t panels) {
  std::string items;
  for (std::int64_t i = 0; i < panels; ++i) {
    const std::string number = std::to_string(i);
    if (i > 0) items += ',';
    items += R"({"id":"p)";
    items += number;
    items += R"(","md":{"ul":"no address","at":{"tx":"A picture"}},"ti":{"tx":"Title of panel )";
    items += number;
    items +=
        R"(, which takes about a line"},"sti":{"tx":"And a subtitle that is somewhat longer than that"},)";
    items += R"("ac":[{"t":"2","ul":"https://example.com/offer"}]})";
  }
  const auto userInfo =
      QXPlatform::parseJSON(R"({"_sid":"VTQX","_m":"m","_rf":{"vt":{"t":"0","it":[)" + items + "]}}}");
  if (!userInfo) throw std::runtime_error(userInfo.error().message);
  QXPlatform::NotificationProperties properties;
  properties.userInfo = *userInfo->dictionary();
  return std::make_shared<QXPlatform::UNNotificationRequest>(QXPlatform::UNNotificationRequest{
      "request", std::make_shared<QXPlatform::UNNotificationContent>(std::move(properties))});
}

// A content extension and the pixels it is drawn to.
class Stage {
 public:
  explicit Stage(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request) {
    host_.deliver(request);
    const QXPlatform::Size size = host_.contentSize();
    pixels_ = QImage(QSize(static_cast<int>(size.width * kScale), static_cast<int>(size.height * kScale)),
                     QImage::Format_RGB32);
    pixels_.setDevicePixelRatio(kScale);
  }

  void draw() {
    QPainter painter(&pixels_);
    host_.view().render(&painter);
  }
  QXExtensionSDK::CarouselViewController& screen() {
    return dynamic_cast<QXExtensionSDK::CarouselViewController&>(*extension_->coordinatorVC());
  }

 private:
  std::shared_ptr<QXExtensionSDK::VTQXNotificationViewController> extension_ =
      std::make_shared<QXExtensionSDK::VTQXNotificationViewController>();
  QXPlatform::ContentExtensionHost host_{extension_, kWidth};
  QImage pixels_;
};

void payloadToFirstPanel(benchmark::State& state) {
  const auto request = makeRequest(state.range(0));
  for (auto _ : state) {
    Stage stage(request);
    stage.draw();
  }
}
BENCHMARK(payloadToFirstPanel)->Arg(1)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);

// To panels that have not been shown before; the way back to the first is not measured.
void stepToANewPanel(benchmark::State& state) {
  const auto request = makeRequest(state.range(0));
  auto stage = std::make_unique<Stage>(request);
  for (auto _ : state) {
    if (!stage->screen().nextButton().isEnabled()) {
      state.PauseTiming();
      stage = std::make_unique<Stage>(request);
      stage->draw();
      state.ResumeTiming();
    }
    stage->screen().nextButton().click();
    stage->draw();
  }
}
BENCHMARK(stepToANewPanel)->Arg(2)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);

// Between panels that have been shown.
void stepToAKnownPanel(benchmark::State& state) {
  Stage stage(makeRequest(state.range(0)));
  bool forward = true;
  for (auto _ : state) {
    (forward ? stage.screen().nextButton() : stage.screen().backButton()).click();
    forward = !forward;
    stage.draw();
  }
}
BENCHMARK(stepToAKnownPanel)->Arg(2)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  qputenv("QT_SCALE_FACTOR", QByteArray::number(kScale));
  const auto application = QXPlatform::makeApplication(QXPlatform::ScreenUse::none);
  benchmark::RunSpecifiedBenchmarks();
}
