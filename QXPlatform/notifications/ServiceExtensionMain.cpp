#include "QXPlatform/notifications/ServiceExtensionMain.h"

#include <charconv>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string_view>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/notifications/PushLines.h"
#include "QXPlatform/notifications/ServiceExtensionHost.h"
#include "QXPlatform/notifications/StandardInput.h"

namespace QXPlatform {

namespace {

constexpr auto kLongestWaitForWork = std::chrono::seconds(30);

struct Arguments {
  double timeLimitSeconds = 30;
  std::size_t jobs = 1;
  std::optional<std::filesystem::path> attachments;
};

// Above zero, and not above the most; what is not a number is neither.
template <typename Number>
bool readNumber(std::string_view text, Number& number, Number most) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number > 0 && number <= most;
}

std::optional<Arguments> readArguments(int argc, const char* const* argv, std::size_t mostAtOnce) {
  Arguments arguments;
  for (int i = 1; i < argc; i += 2) {
    const std::string_view name = argv[i];
    if (i + 1 == argc) return std::nullopt;
    if (name == "--attachments") {
      arguments.attachments = argv[i + 1];
      continue;
    }
    const bool known = name == "--time-limit" ? readNumber(argv[i + 1], arguments.timeLimitSeconds,
                                                           ServiceExtensionHost::kLongestTimeLimit.count())
                       : name == "--jobs"     ? readNumber(argv[i + 1], arguments.jobs, mostAtOnce)
                                              : false;
    if (!known) return std::nullopt;
  }
  return arguments;
}

}  // namespace

int serviceExtensionMain(int argc, const char* const* argv, const ServiceExtensionFactory& makeExtension,
                         std::size_t mostAtOnce) {
  const auto arguments = readArguments(argc, argv, mostAtOnce);
  if (!arguments) {
    std::cerr << "usage: " << (argc > 0 ? argv[0] : "extension")
              << " [--time-limit SECONDS] [--jobs N] [--attachments DIR]  (notifications on standard input, "
                 "one JSON object a line;"
                 " a day and "
              << mostAtOnce << " at most)\n";
    return 2;
  }
  // A reader that goes away ends the answers, not the work in flight.
  std::signal(SIGPIPE, SIG_IGN);
  // A file that may not grow is an error of the write.
  std::signal(SIGXFSZ, SIG_IGN);
  ServiceExtensionHost host(makeExtension, std::chrono::duration<double>(arguments->timeLimitSeconds),
                            arguments->attachments);
  PushLineSource source(standardInput(), {}, kLongestFullRequest);
  const PushAnswers answers = answerPushes(
      source, std::cout,
      {.answer = [&](const auto& request) -> Result<Dictionary> { return host.run(request).toJSON(); },
       .jobs = arguments->jobs,
       .limits = kFullRequestLimits,
       .inOrder = false,
       .progress = nullptr});
  Activity::waitUntilNone(Clock::current().now() + kLongestWaitForWork);
  return answers.errors == 0 && !answers.outputFailed ? 0 : 1;
}

}  // namespace QXPlatform
