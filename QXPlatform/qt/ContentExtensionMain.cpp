#include "QXPlatform/ui/ContentExtensionMain.h"

#include <QApplication>
#include <charconv>
#include <chrono>
#include <cmath>
#include <iostream>
#include <optional>
#include <string_view>
#include <utility>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/notifications/PushLines.h"
#include "QXPlatform/notifications/StandardInput.h"
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
};

std::optional<int> readWidth(std::string_view text) {
  int width = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), width);
  const bool isNumber = error == std::errc() && end == text.data() + text.size();
  return isNumber && width > 0 && width <= kWidest ? std::optional(width) : std::nullopt;
}

std::optional<Arguments> readArguments(int argc, const char* const* argv) {
  Arguments arguments;
  for (int i = 1; i < argc; ++i) {
    const std::string_view name = argv[i];
    if (name == "--reuse") {
      arguments.reuse = true;
    } else if (name == "--window") {
      arguments.window = true;
    } else if (name == "--width" && i + 1 < argc) {
      const auto width = readWidth(argv[++i]);
      if (!width) return std::nullopt;
      arguments.width = *width;
    } else {
      return std::nullopt;
    }
  }
  return arguments.reuse && arguments.window ? std::nullopt : std::optional(arguments);
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
  runInWindow(host, request.content->snapshot().title, [&isPerformed] { isPerformed = true; });
  return answer(host, request).merging({{"defaultActionPerformed", isPerformed}});
}

}  // namespace

int contentExtensionMain(int argc, char** argv, const ContentExtensionHostFactory& makeHost) {
  const char* program = argc > 0 ? argv[0] : "extension";
  const auto arguments = readArguments(argc, argv);
  if (!arguments) {
    std::cerr << "usage: " << program
              << " [--width POINTS] [--reuse | --window]  (notifications on standard input, one JSON object "
                 "a line)\n";
    return 2;
  }
  if (arguments->window && !hasScreen()) {
    std::cerr << program << ": there is no screen for a window\n";
    return 1;
  }
  const auto application = makeApplication(arguments->window ? ScreenUse::windows : ScreenUse::none);
  std::unique_ptr<ContentExtensionHost> host;
  std::unique_ptr<PushSource> source;
  if (arguments->window) {
    source = std::make_unique<FirstPush>();
  } else {
    source = std::make_unique<PushLineSource>(standardInput());
  }
  const auto show = [&](const std::shared_ptr<const UNNotificationRequest>& request) -> Result<Dictionary> {
    if (host == nullptr || !arguments->reuse) host = makeHost(arguments->width);
    host->deliver(request);
    if (arguments->window) return showInWindow(*host, *request);
    QCoreApplication::processEvents();
    return answer(*host, *request);
  };
  const PushAnswers answers =
      answerPushes(*source, std::cout, {.answer = show, .limits = kFullRequestLimits, .progress = nullptr});
  host.reset();
  Activity::waitUntilNone(Clock::current().now() + kLongestWaitForWork);
  return answers.errors == 0 && !answers.outputFailed ? 0 : 1;
}

}  // namespace QXPlatform
