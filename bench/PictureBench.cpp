// The carousel with its pictures, photographs of 1200 by 675 pixels that are fetched, decoded and drawn at
// three pixels each of 360 points. Time is the processor's, of all processes but the server's.

#include <benchmark/benchmark.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <QAbstractAnimation>
#include <QApplication>
#include <QBuffer>
#include <QEvent>
#include <QImageReader>
#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "QXPlatform/ui/Application.h"
#include "QXPlatform/ui/ContentExtensionWindow.h"
#include "bench/ContentStage.h"
#include "bench/Photographs.h"
#include "bench/ProcessorTime.h"
#include "tools/backend/LoopbackServer.h"

namespace {

using Clock = std::chrono::steady_clock;
using QXExtensionSDK::ImageLoadingState;
using Seconds = std::chrono::duration<double>;

constexpr double kScale = 3;
constexpr int kPanels = 10;
constexpr std::array kFormats{"JPEG", "PNG", "WEBP"};

// Of the server, which is a process of its own.
std::string baseAddress;
std::unique_ptr<ProcessorTime> processorTime;

[[noreturn]] void servePictures(int answer) {
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  backend::LoopbackServerOptions options;
  options.keepsRequests = false;
  options.handler = [pictures = std::array{encodedPhotograph(kFormats[0]), encodedPhotograph(kFormats[1]),
                                           encodedPhotograph(kFormats[2])}](const backend::Request& request) {
    const auto format = static_cast<std::size_t>(request.path.at(1) - '0');
    return backend::Response{.body = pictures.at(format)};
  };
  const backend::LoopbackServer server(std::move(options));
  const std::uint16_t port = server.port();
  if (::write(answer, &port, sizeof port) != sizeof port) ::_exit(1);
  for (;;) ::pause();
}

void startServer() {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
  if (::fork() == 0) servePictures(ends[1]);
  std::uint16_t port = 0;
  if (::read(ends[0], &port, sizeof port) != sizeof port) throw std::runtime_error("no server");
  baseAddress = "http://127.0.0.1:" + std::to_string(port) + "/";
}

std::unique_ptr<ContentStage> makeStage(std::int64_t format) {
  const auto address = [format](std::int64_t panel) {
    return baseAddress + std::to_string(format) + "/" + std::to_string(panel);
  };
  return std::make_unique<ContentStage>(carouselRequest(kPanels, address), kScale);
}

void waitForPicture(ContentStage& stage) {
  while (stage.screen().isAnyImageDownloading())
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  const auto index = static_cast<std::size_t>(stage.screen().viewModel().currentPanelIndex);
  const auto state = stage.screen().panelView(index)->imageView().imageLoadingState();
  if (state != ImageLoadingState::success) throw std::runtime_error("a picture has not come");
}

void named(benchmark::State& state) {
  state.SetLabel(kFormats.at(static_cast<std::size_t>(state.range(0))));
}

// As somebody sees it: without the picture, and with it.
void firstPicture(benchmark::State& state) {
  for (auto _ : state) {
    const auto begin = processorTime->now();
    const auto stage = makeStage(state.range(0));
    stage->draw();
    waitForPicture(*stage);
    stage->draw();
    state.SetIterationTime(Seconds(processorTime->now() - begin).count());
  }
  named(state);
}
BENCHMARK(firstPicture)->DenseRange(0, 2)->UseManualTime()->Unit(benchmark::kMicrosecond);

// The toolkit's own way from the same bytes to the same pixels, in this process.
void toolkitsPicture(benchmark::State& state) {
  constexpr QSize kPlace(984, 555);
  const auto bytes =
      QByteArray::fromStdString(encodedPhotograph(kFormats.at(static_cast<std::size_t>(state.range(0)))));
  QImage pixels(kPlace, QImage::Format_RGB32);
  for (auto _ : state) {
    const auto begin = processorTime->now();
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    reader.setScaledSize(kPlace);
    QPainter(&pixels).drawImage(0, 0, reader.read());
    state.SetIterationTime(Seconds(processorTime->now() - begin).count());
  }
  named(state);
}
BENCHMARK(toolkitsPicture)->DenseRange(0, 2)->UseManualTime()->Unit(benchmark::kMicrosecond);

std::unique_ptr<ContentStage> makeShownStage() {
  auto stage = makeStage(0);
  waitForPicture(*stage);
  stage->draw();
  return stage;
}

// What the main thread does until the next panel is drawn, whose picture is on its way then.
void stepToTheNextPanel(benchmark::State& state) {
  auto stage = makeShownStage();
  for (auto _ : state) {
    if (!stage->screen().nextButton().isEnabled()) {
      state.PauseTiming();
      stage = makeShownStage();
      state.ResumeTiming();
    }
    stage->screen().nextButton().click();
    stage->draw();
    state.PauseTiming();
    waitForPicture(*stage);
    state.ResumeTiming();
  }
}
BENCHMARK(stepToTheNextPanel)->Unit(benchmark::kMicrosecond);

// To a panel whose picture is there, and what drawing that alone takes.
void stepBetweenPictures(benchmark::State& state) {
  const auto stage = makeShownStage();
  bool forward = true;
  for (auto _ : state) {
    (forward ? stage->screen().nextButton() : stage->screen().backButton()).click();
    forward = !forward;
    stage->draw();
  }
}
BENCHMARK(stepBetweenPictures)->Unit(benchmark::kMicrosecond);

void drawing(benchmark::State& state) {
  const auto stage = makeShownStage();
  for (auto _ : state) stage->draw();
}
BENCHMARK(drawing)->Unit(benchmark::kMicrosecond);

// Looks on while a window draws its frames, by the clock of the slide's own frames.
class FrameWatch final : public QAbstractAnimation {
 public:
  explicit FrameWatch(QWidget& window) : window_(window) { window.installEventFilter(this); }

  int duration() const override { return -1; }
  int frames() const { return frames_; }
  // Drawn more than a frame's time after they were due, or never.
  int late() const { return late_; }
  Seconds latest() const { return latest_; }
  Seconds drawing() const { return drawing_; }

 protected:
  void updateState(State state, State /*before*/) override {
    if (state == Running) frameBegan_ = Clock::now();
  }

  void updateCurrentTime(int /*milliseconds*/) override {
    const auto now = Clock::now();
    if (now - std::exchange(frameBegan_, now) > 2 * kFrame) ++late_;
    isDue_ = true;
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched != &window_ || event->type() != QEvent::UpdateRequest) return false;
    const auto begin = Clock::now();
    watched->event(event);
    const auto end = Clock::now();
    ++frames_;
    drawing_ += end - begin;
    // A picture that comes in between is no frame of the slide.
    if (!std::exchange(isDue_, false)) return true;
    latest_ = std::max<Seconds>(latest_, end - frameBegan_);
    if (end - frameBegan_ > kFrame) ++late_;
    return true;
  }

 private:
  static constexpr std::chrono::milliseconds kFrame{16};

  QWidget& window_;
  Clock::time_point frameBegan_;
  bool isDue_ = false;
  int frames_ = 0;
  int late_ = 0;
  Seconds latest_{};
  Seconds drawing_{};
};

// Twenty slides, there and back: the first half to panels whose pictures come meanwhile.
void slide(benchmark::State& state) {
  qunsetenv("QX_REDUCE_MOTION");
  const auto stage = makeStage(0);
  QXPlatform::ContentExtensionWindow window(stage->host(), "Slides");
  window.open([] {});
  waitForPicture(*stage);
  FrameWatch watch(*stage->host().view().window());
  auto& screen = stage->screen();
  bool forward = true;
  for (auto _ : state) {
    const int framesBefore = watch.frames();
    const Seconds drawingBefore = watch.drawing();
    if (!(forward ? screen.nextButton() : screen.backButton()).isEnabled()) forward = !forward;
    watch.start();
    (forward ? screen.nextButton() : screen.backButton()).click();
    while (screen.contentView().isSliding()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    watch.stop();
    const Seconds drawing = watch.drawing() - drawingBefore;
    state.SetIterationTime(drawing.count() / (watch.frames() - framesBefore));
    waitForPicture(*stage);
    QCoreApplication::processEvents();
  }
  state.counters["frames"] = watch.frames();
  state.counters["late"] = watch.late();
  state.counters["latest_ms"] = watch.latest().count() * 1e3;
}
BENCHMARK(slide)->Iterations(20)->Repetitions(5)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  startServer();
  processorTime = std::make_unique<ProcessorTime>();
  qputenv("QT_SCALE_FACTOR", QByteArray::number(kScale));
  const auto application = QXPlatform::makeApplication(QXPlatform::ScreenUse::none);
  benchmark::RunSpecifiedBenchmarks();
}
