// The part of the simulator that draws; `qx carousel` becomes this program.

#include <QApplication>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/ui/Application.h"
#include "tools/qx/CarouselOptions.h"
#include "tools/qx/Results.h"
#include "tools/qx/SimulatedLog.h"
#include "tools/qx/carousel/CarouselSession.h"
#include "tools/qx/carousel/Gallery.h"

namespace {

constexpr int kWrongUsage = 2;
// What was cancelled ends at once; a process must not go down around a thread at work.
constexpr std::chrono::seconds kLongestWaitForWork(5);

qx::PlayedCarousel::StepHandler reportTo(const qx::SimulatorOptions& simulator) {
  return [&simulator](const QXPlatform::Dictionary& state) { qx::printResult(simulator, state); };
}

bool usesWindow(const qx::CarouselOptions& options) {
  return !options.png && !options.steps && !options.gallery && QXPlatform::hasScreen();
}

// The carousel ends in here, and with it what it was still fetching.
std::optional<QXPlatform::Error> runSession(const qx::CarouselInvocation& invocation, bool inWindow) {
  const qx::CarouselOptions& options = invocation.carousel;
  const auto carousel =
      qx::makeCarousel(invocation, {options.width, inWindow}, reportTo(invocation.simulator));
  if (!carousel) return carousel.error();
  qx::CarouselSession session(invocation, **carousel);
  if (options.png || options.steps) return session.runScript();
  if (inWindow && options.watch) return session.runWatch();
  return inWindow ? session.runWindow() : session.runWithoutScreen();
}

int run(const qx::CarouselInvocation& invocation) {
  const qx::CarouselOptions& options = invocation.carousel;
  const bool inWindow = usesWindow(options);
  if (options.scale || !inWindow) {
    qputenv("QT_SCALE_FACTOR", QByteArray::number(options.scale.value_or(qx::kDrawingScale)));
  }
  const auto application = QXPlatform::makeApplication(
      inWindow ? QXPlatform::ScreenUse::windows : QXPlatform::ScreenUse::none, "qx carousel");
  const qx::SimulatedLog log(invocation.simulator);
  if (options.gallery) return qx::finish(qx::runGallery(invocation));
  const auto refused = runSession(invocation, inWindow);
  QXPlatform::Activity::waitUntilNone(QXPlatform::Clock::current().now() + kLongestWaitForWork);
  return qx::finish(refused ? qx::fail("carousel", refused->message) : 0);
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  const auto invocation = QXPlatform::decodeJSON<qx::CarouselInvocation>(argc == 2 ? argv[1] : "");
  if (!invocation) {
    std::cerr << "qx-carousel: to be started by qx carousel: " << invocation.error().description() << '\n';
    return kWrongUsage;
  }
  try {
    return run(*invocation);
  } catch (const std::exception& error) {
    return qx::fail("carousel", error.what());
  }
}
