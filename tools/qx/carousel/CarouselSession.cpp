#include "tools/qx/carousel/CarouselSession.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <iostream>
#include <utility>
#include <vector>

#include "QXExtensionSDK/content/CarouselClickStoring.h"
#include "QXExtensionSDK/decoration/DecompressionDecorator.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/ui/Appearance.h"
#include "QXPlatform/ui/ContentExtensionWindow.h"
#include "tools/qx/PushFiles.h"
#include "tools/qx/Results.h"
#include "tools/qx/carousel/CarouselReport.h"

namespace qx {

namespace {

using QXExtensionSDK::CarouselViewController;
using QXPlatform::Error;
using QXPlatform::Result;
using Request = std::shared_ptr<const QXPlatform::UNNotificationRequest>;

// An image has 15 seconds without progress, and some seconds of progress.
constexpr std::chrono::seconds kLongestWaitForImages(20);
constexpr int kMostTries = 3;

class SimulatedContentExtension final : public QXExtensionSDK::VTQXNotificationViewController {
 public:
  explicit SimulatedContentExtension(QXExtensionSDK::LogLevel logLevel) : logLevel_(logLevel) {}

  std::optional<QXExtensionSDK::VTContentExtensionConfig> vtqxProvideConfig() override {
    constexpr double kTimeout = 15;
    return QXExtensionSDK::VTContentExtensionConfig(logLevel_, kTimeout);
  }

 private:
  const QXExtensionSDK::LogLevel logLevel_;
};

// What the service extension would have done before the notification was shown.
Request inflated(Request request) {
  using namespace QXExtensionSDK;
  if (request->content == nullptr || !VTQXUtility::isVTQXPushNotification(*request)) return request;
  QXPlatform::NotificationProperties properties = request->content->snapshot();
  if (!properties.userInfo.contains("$_rf")) return request;
  const Logger& logger = Logger::service();
  const DecompressionDecorator decorator(logger, std::make_unique<ConcreteDecompressionContext>(logger));
  const auto changes = decorator.decorate(properties.userInfo, *request);
  if (!changes) return request;
  properties.userInfo = properties.userInfo.merging(*changes);
  return std::make_shared<QXPlatform::UNNotificationRequest>(QXPlatform::UNNotificationRequest{
      request->identifier, std::make_shared<QXPlatform::UNNotificationContent>(std::move(properties))});
}

Result<Request> readPush(const std::string& file) {
  PushFiles files({file});
  const auto push = files.next();
  if (!push) return Error{file + ": no push"};
  if (push->unreadable) return *push->unreadable;
  const auto parsed = QXPlatform::parseJSON(push->text);
  if (!parsed) return Error{file + ": " + parsed.error().message};
  const auto request = QXPlatform::notificationRequestFromJSON(*parsed);
  if (!request) return Error{file + ": " + request.error().message};
  return inflated(*request);
}

void runEventsFor(std::chrono::milliseconds time) {
  QEventLoop loop;
  QTimer timer;
  timer.setSingleShot(true);
  QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
  timer.start(time);
  loop.exec();
}

std::filesystem::path numbered(const std::filesystem::path& file, std::size_t index) {
  std::filesystem::path name = file.stem();
  name += "-" + std::to_string(index);
  name += file.extension();
  return file.parent_path() / name;
}

}  // namespace

CarouselSession::CarouselSession(const CarouselInvocation& invocation)
    : invocation_(invocation),
      extension_(std::make_shared<SimulatedContentExtension>(invocation.simulator.logLevel)),
      host_(extension_, invocation.carousel.width) {}

CarouselSession::~CarouselSession() = default;

std::optional<Error> CarouselSession::load(const std::string& file) {
  const auto request = readPush(file);
  if (!request) return request.error();
  host_.deliver(*request);
  reportMissingFont();
  return std::nullopt;
}

void CarouselSession::reportMissingFont() {
  const auto* carousel = screen();
  if (carousel == nullptr || isMissingFontReported_) return;
  for (const auto& panel : *carousel->viewModel().panels) {
    for (const auto& text : {panel.title, panel.subTitle, panel.media.altText}) {
      if (!text || QXPlatform::hasGlyphsFor(text->text)) continue;
      std::cerr << "qx carousel: no font of this system has all letters of \"" << text->text << "\"\n";
      isMissingFontReported_ = true;
      return;
    }
  }
}

CarouselViewController* CarouselSession::screen() const {
  if (host_.isCollapsed()) return nullptr;
  return dynamic_cast<CarouselViewController*>(extension_->coordinatorVC().get());
}

std::size_t CarouselSession::panelCount() const {
  const auto* carousel = screen();
  return carousel == nullptr ? 0 : carousel->viewModel().panels->size();
}

void CarouselSession::report(std::string_view step) {
  const auto* carousel = dynamic_cast<const CarouselViewController*>(extension_->coordinatorVC().get());
  printResult(invocation_.simulator, reportCarousel(step, host_, carousel));
}

std::optional<Error> CarouselSession::runScript() {
  std::vector<CarouselStep> steps;
  if (invocation_.carousel.steps) {
    auto parsed = parseCarouselSteps(*invocation_.carousel.steps);
    if (!parsed) return parsed.error();
    steps = *std::move(parsed);
  }
  if (auto refused = load(invocation_.carousel.file)) return refused;
  report("load");
  for (const CarouselStep& step : steps) {
    if (auto refused = take(step)) return refused;
    report(step.name());
  }
  return invocation_.carousel.png ? draw() : std::nullopt;
}

std::optional<Error> CarouselSession::runWithoutScreen() {
  if (auto refused = load(invocation_.carousel.file)) return refused;
  report("load");
  if (screen() != nullptr) {
    std::cerr << "qx carousel: there is no screen for a window; --png draws into a file\n";
  }
  return std::nullopt;
}

std::optional<Error> CarouselSession::runWindow() {
  if (auto refused = load(invocation_.carousel.file)) return refused;
  report("load");
  if (screen() == nullptr) {
    std::cerr << "qx carousel: nothing to show, the notification keeps its ordinary look\n";
    return std::nullopt;
  }
  QXPlatform::runInWindow(host_, "qx carousel", [this] { report("tap"); });
  return std::nullopt;
}

std::optional<Error> CarouselSession::take(const CarouselStep& step) {
  auto* carousel = screen();
  switch (step.kind) {
    case CarouselStep::Kind::next:
      if (carousel != nullptr) carousel->nextButton().click();
      break;
    case CarouselStep::Kind::back:
      if (carousel != nullptr) carousel->backButton().click();
      break;
    case CarouselStep::Kind::tick:
      if (carousel != nullptr) carousel->timerFired();
      break;
    case CarouselStep::Kind::tap:
      if (carousel != nullptr) carousel->tapGesturePerformed();
      QXExtensionSDK::clickSavingQueue().sync([] {});
      QCoreApplication::sendPostedEvents();
      break;
    case CarouselStep::Kind::refresh:
      return load(step.file);
    case CarouselStep::Kind::wait:
      wait(step.time);
      break;
  }
  return std::nullopt;
}

void CarouselSession::wait(std::chrono::milliseconds time) {
  runEventsFor(time);
  waitForImages();
}

void CarouselSession::waitForImages() {
  constexpr std::chrono::milliseconds kPause(2);
  const QDeadlineTimer deadline(kLongestWaitForImages);
  while (screen() != nullptr && screen()->isAnyImageDownloading() && !deadline.hasExpired()) {
    runEventsFor(kPause);
  }
}

std::optional<Error> CarouselSession::draw() {
  const CarouselOptions& options = invocation_.carousel;
  if (screen() == nullptr) {
    std::cerr << "qx carousel: nothing to draw, the notification keeps its ordinary look\n";
    return std::nullopt;
  }
  const std::size_t count = panelCount();
  if (options.all) {
    std::optional<Error> refused;
    for (std::size_t i = 0; i < count && !refused; ++i) refused = drawPanel(i, numbered(*options.png, i));
    return refused;
  }
  if (options.panel && static_cast<std::size_t>(*options.panel) >= count) {
    return Error{"--panel " + std::to_string(*options.panel) + ": the carousel has " + std::to_string(count) +
                 (count == 1 ? " panel" : " panels") + ", counted from 0"};
  }
  return drawPanel(options.panel ? static_cast<std::size_t>(*options.panel) : position(), *options.png);
}

std::optional<Error> CarouselSession::drawPanel(std::size_t index, const std::filesystem::path& file) {
  if (!settleAt(index)) return Error{"panel " + std::to_string(index) + " cannot be reached"};
  if (!host_.view().grab().save(QString::fromStdString(file.string()), "PNG")) {
    return Error{"cannot write " + file.string()};
  }
  return std::nullopt;
}

// While images arrive the carousel's own timer may move it on; a failed image is tried again when the
// carousel comes back to it.
bool CarouselSession::settleAt(std::size_t index) {
  const QDeadlineTimer deadline(kLongestWaitForImages * kMostTries);
  do {
    if (!goTo(index)) return false;
    waitForImages();
  } while ((position() != index || screen()->isAnyImageDownloading()) && !deadline.hasExpired());
  return goTo(index);
}

std::size_t CarouselSession::position() const {
  return static_cast<std::size_t>(screen()->viewModel().currentPanelIndex);
}

bool CarouselSession::goTo(std::size_t index) {
  while (position() < index && screen()->nextButton().isEnabled()) screen()->nextButton().click();
  while (position() > index && screen()->backButton().isEnabled()) screen()->backButton().click();
  return position() == index;
}

}  // namespace qx
