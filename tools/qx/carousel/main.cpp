// The part of the simulator that draws; `qx carousel` becomes this program.

#include <QApplication>
#include <chrono>
#include <csignal>
#include <iostream>
#include <optional>

#include "platform/dispatch/Activity.h"
#include "platform/ui/Appearance.h"
#include "platform/ui/Application.h"
#include "tools/qx/CarouselOptions.h"
#include "tools/qx/Results.h"
#include "tools/qx/StandardErrorLogSink.h"
#include "tools/qx/carousel/CarouselSession.h"

namespace {

constexpr int kWrongUsage = 2;
// What was cancelled ends at once; a process must not go down around a thread at work.
constexpr std::chrono::seconds kLongestWaitForWork(5);

// The session ends in here, and with it what it was still fetching.
std::optional<platform::Error> runSession(const qx::CarouselInvocation& invocation, bool usesWindow) {
  qx::CarouselSession session(invocation);
  const qx::CarouselOptions& options = invocation.carousel;
  if (options.png || options.steps) return session.runScript();
  return usesWindow ? session.runWindow() : session.runWithoutScreen();
}

int run(const qx::CarouselInvocation& invocation) {
  const qx::CarouselOptions& options = invocation.carousel;
  const bool usesWindow = !options.png && !options.steps && platform::hasScreen();
  if (options.scale || !usesWindow) {
    qputenv("QT_SCALE_FACTOR", QByteArray::number(options.scale.value_or(qx::kDrawingScale)));
  }
  const auto application =
      platform::makeApplication(usesWindow ? platform::ScreenUse::windows : platform::ScreenUse::none);
  if (options.dark) platform::setUserInterfaceStyle(platform::UserInterfaceStyle::dark);
  if (options.rtl) QApplication::setLayoutDirection(Qt::RightToLeft);

  qx::StandardErrorLogSink sink(invocation.simulator.logFormat);
  const platform::ScopedLogSink logging(sink);
  const auto refused = runSession(invocation, usesWindow);
  platform::Activity::waitUntilNone(platform::Clock::current().now() + kLongestWaitForWork);
  return qx::finish(refused ? qx::fail("carousel", refused->message) : 0);
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  const auto invocation = qx::decodeInvocation(argc == 2 ? argv[1] : "");
  if (!invocation) {
    std::cerr << "qx-carousel: " << invocation.error().message << '\n';
    return kWrongUsage;
  }
  return run(*invocation);
}
