// The part of the simulator that draws; `qx carousel` becomes this program.

#include <QApplication>
#include <chrono>
#include <csignal>
#include <iostream>
#include <optional>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/ui/Appearance.h"
#include "QXPlatform/ui/Application.h"
#include "tools/qx/CarouselOptions.h"
#include "tools/qx/Results.h"
#include "tools/qx/StandardErrorLogSink.h"
#include "tools/qx/carousel/CarouselSession.h"

namespace {

constexpr int kWrongUsage = 2;
// What was cancelled ends at once; a process must not go down around a thread at work.
constexpr std::chrono::seconds kLongestWaitForWork(5);

// The session ends in here, and with it what it was still fetching.
std::optional<QXPlatform::Error> runSession(const qx::CarouselInvocation& invocation, bool usesWindow) {
  qx::CarouselSession session(invocation);
  const qx::CarouselOptions& options = invocation.carousel;
  if (options.png || options.steps) return session.runScript();
  return usesWindow ? session.runWindow() : session.runWithoutScreen();
}

int run(const qx::CarouselInvocation& invocation) {
  const qx::CarouselOptions& options = invocation.carousel;
  const bool usesWindow = !options.png && !options.steps && QXPlatform::hasScreen();
  if (options.scale || !usesWindow) {
    qputenv("QT_SCALE_FACTOR", QByteArray::number(options.scale.value_or(qx::kDrawingScale)));
  }
  const auto application =
      QXPlatform::makeApplication(usesWindow ? QXPlatform::ScreenUse::windows : QXPlatform::ScreenUse::none);
  if (options.dark) QXPlatform::setUserInterfaceStyle(QXPlatform::UserInterfaceStyle::dark);
  if (options.rtl) QApplication::setLayoutDirection(Qt::RightToLeft);

  qx::StandardErrorLogSink sink(invocation.simulator.logFormat);
  const QXPlatform::ScopedLogSink logging(sink);
  const auto refused = runSession(invocation, usesWindow);
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
  return run(*invocation);
}
