#include "QXPlatform/ui/ContentExtensionMain.h"

#include <QApplication>
#include <chrono>
#include <cmath>
#include <csignal>
#include <iostream>
#include <optional>
#include <utility>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/foundation/CommandLine.h"
#include "QXPlatform/notifications/PushLines.h"
#include "QXPlatform/notifications/StandardInput.h"
#include "QXPlatform/qt/ContentExtensionConversation.h"
#include "QXPlatform/ui/Application.h"
#include "QXPlatform/ui/ContentExtensionWindow.h"

namespace QXPlatform {

namespace {

constexpr int kWidest = 10'000;
// What was cancelled ends at once; a process must not go down around a thread at work.
constexpr std::chrono::seconds kLongestWaitForWork(5);

struct Arguments {
  int width = 360;
  bool reuse = false;
  bool window = false;
  bool drive = false;
};

std::optional<Arguments> readArguments(int argc, const char* const* argv) {
  Arguments arguments;
  const auto takeWidth = [&](const char* points) { return readNumber(points, arguments.width, kWidest); };
  const bool isUnderstood =
      readCommandLine(argc, argv,
                      {{"width", true, takeWidth},
                       {"reuse", false, [&](const char*) { return arguments.reuse = true; }},
                       {"window", false, [&](const char*) { return arguments.window = true; }},
                       {"drive", false, [&](const char*) { return arguments.drive = true; }}});
  const bool isContradiction = arguments.reuse && (arguments.window || arguments.drive);
  return isUnderstood && !isContradiction ? std::optional(arguments) : std::nullopt;
}

// The first notification alone.
class FirstPush final : public PushSource {
 public:
  std::optional<PushText> next() override {
    return std::exchange(isTaken_, true) ? std::nullopt : source_.next();
  }

 private:
  PushLineSource source_{standardInput(), {}, kLongestFullRequest};
  bool isTaken_ = false;
};

Dictionary answer(ContentExtensionHost& host, const UNNotificationRequest& request) {
  const Size size = host.contentSize();
  return {{"identifier", request.identifier},
          {"outcome", host.isCollapsed() ? "collapsed" : "shown"},
          {"preferredContentSize", std::vector<Value>{std::llround(size.width), std::llround(size.height)}},
          {"responseOption", responseOptionName(host.respond())}};
}

Result<Dictionary> showInWindow(ContentExtensionHost& host, const UNNotificationRequest& request) {
  if (host.isCollapsed()) return answer(host, request);
  bool isPerformed = false;
  ContentExtensionWindow window(host, request.content->snapshot().title);
  window.open([&] {
    isPerformed = true;
    window.close();
  });
  QApplication::exec();
  return answer(host, request).merging({{"defaultActionPerformed", isPerformed}});
}

bool answerAll(const Arguments& arguments, const ContentExtensionHostFactory& makeHost) {
  std::unique_ptr<ContentExtensionHost> host;
  std::unique_ptr<PushSource> source;
  if (arguments.window) {
    source = std::make_unique<FirstPush>();
  } else {
    source = std::make_unique<PushLineSource>(standardInput());
  }
  const auto show = [&](const std::shared_ptr<const UNNotificationRequest>& request) -> Result<Dictionary> {
    if (host == nullptr || !arguments.reuse) host = makeHost(arguments.width);
    host->deliver(request);
    if (arguments.window) return showInWindow(*host, *request);
    QCoreApplication::processEvents();
    return answer(*host, *request);
  };
  const PushAnswers answers =
      answerPushes(*source, std::cout,
                   {.answer = [&](const auto& request, const auto& completion) { completion(show(request)); },
                    .limits = kFullRequestLimits,
                    .progress = nullptr});
  return answers.errors == 0 && !answers.outputFailed;
}

bool beDriven(const Arguments& arguments, const ContentExtensionHostFactory& makeHost) {
  const auto host = makeHost(arguments.width);
  return ContentExtensionConversation(*host).run();
}

}  // namespace

int contentExtensionMain(int argc, char** argv, const ContentExtensionHostFactory& makeHost) {
  const char* program = argc > 0 ? argv[0] : "extension";
  const auto arguments = readArguments(argc, argv);
  if (!arguments) {
    std::cerr << "usage: " << program
              << " [--width POINTS] [--reuse | --window | --drive [--window]]  (notifications on standard "
                 "input, one JSON object a line)\n";
    return 2;
  }
  if (arguments->window && !hasScreen()) {
    std::cerr << program << ": there is no screen for a window\n";
    return 1;
  }
  // A file that may not grow is an error of the write.
  std::signal(SIGXFSZ, SIG_IGN);
  const auto application = makeApplication(arguments->window ? ScreenUse::windows : ScreenUse::none, program);
  const bool isGood = arguments->drive ? beDriven(*arguments, makeHost) : answerAll(*arguments, makeHost);
  Activity::waitUntilNone(Clock::current().now() + kLongestWaitForWork);
  return isGood ? 0 : 1;
}

}  // namespace QXPlatform
