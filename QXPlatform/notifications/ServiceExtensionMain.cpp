#include "QXPlatform/notifications/ServiceExtensionMain.h"

#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <optional>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/foundation/CommandLine.h"
#include "QXPlatform/foundation/MemoryUse.h"
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

std::optional<Arguments> readArguments(int argc, const char* const* argv, std::size_t mostAtOnce) {
  Arguments arguments;
  const auto takeTimeLimit = [&](const char* seconds) {
    return readNumber(seconds, arguments.timeLimitSeconds, ServiceExtensionHost::kLongestTimeLimit.count());
  };
  const auto takeJobs = [&](const char* count) { return readNumber(count, arguments.jobs, mostAtOnce); };
  const auto takeAttachments = [&](const char* directory) {
    arguments.attachments = directory;
    return true;
  };
  const bool isUnderstood = readCommandLine(argc, argv,
                                            {{"time-limit", true, takeTimeLimit},
                                             {"jobs", true, takeJobs},
                                             {"attachments", true, takeAttachments}});
  return isUnderstood ? std::optional(arguments) : std::nullopt;
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
  keepMemoryUseEven();
  // A reader that goes away ends the answers, not the work in flight.
  std::signal(SIGPIPE, SIG_IGN);
  // A file that may not grow is an error of the write.
  std::signal(SIGXFSZ, SIG_IGN);
  ServiceExtensionHost host(makeExtension, std::chrono::duration<double>(arguments->timeLimitSeconds),
                            arguments->attachments);
  PushLineSource source(standardInput(), {}, kLongestFullRequest);
  const PushAnswers answers =
      answerPushes(source, std::cout,
                   {.answer =
                        [&](const auto& request, PushCompletion completion) {
                          host.start(request, [completion = std::move(completion)](const auto& result) {
                            completion(result.toJSON());
                          });
                        },
                    .jobs = arguments->jobs,
                    .limits = kFullRequestLimits,
                    .inOrder = false,
                    .progress = nullptr});
  Activity::waitUntilNone(Clock::current().now() + kLongestWaitForWork);
  return answers.errors == 0 && !answers.outputFailed ? 0 : 1;
}

}  // namespace QXPlatform
