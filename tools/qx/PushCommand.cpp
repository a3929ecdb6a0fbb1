#include "tools/qx/PushCommand.h"

#include <iostream>
#include <memory>
#include <utility>

#include "QXExtensionSDK/runtime/logging/LogLevel.h"
#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/notifications/PushLines.h"
#include "QXPlatform/notifications/ServiceExtensionHost.h"
#include "tools/qx/AttachmentsDirectory.h"
#include "tools/qx/ExtensionEnvironment.h"
#include "tools/qx/ExtensionRun.h"
#include "tools/qx/Progress.h"
#include "tools/qx/PushFiles.h"
#include "tools/qx/Results.h"
#include "tools/qx/SimulatedHostService.h"
#include "tools/qx/StandardErrorLogSink.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

// A receipt may take 22 seconds after its push has been shown.
constexpr auto kLongestWaitForWork = std::chrono::seconds(30);
// What a program is given beyond the time limit, which it keeps itself, before it is ended.
constexpr auto kGraceForProgram = std::chrono::seconds(5);
constexpr int kWrongUsage = 2;

using Answer =
    std::function<Result<Dictionary>(const std::shared_ptr<const QXPlatform::UNNotificationRequest>&)>;

QXPlatform::PushAnswers answerAll(const SimulatorOptions& simulator, const PushOptions& options,
                                  const Answer& answer) {
  PushFiles source(options.files);
  Progress progress("pushes");
  return QXPlatform::answerPushes(
      source, std::cout,
      {.answer = answer,
       .jobs = options.jobs,
       .pretty = simulator.pretty,
       .progress = [&](std::size_t answered) { progress.show(answered, source.partOf(answered)); }});
}

QXPlatform::PushAnswers pushToBuiltIn(const SimulatorOptions& simulator, const PushOptions& options,
                                      const HostBehaviour& host) {
  StandardErrorLogSink sink(simulator.logFormat);
  const QXPlatform::ScopedLogSink logging(sink);
  const AttachmentsDirectory attachments(options.attachments);
  QXPlatform::ServiceExtensionHost extension([&] { return std::make_shared<SimulatedHostService>(host); },
                                             std::chrono::duration<double>(options.timeLimitSeconds),
                                             attachments.path());
  const auto answers = answerAll(simulator, options, [&](const auto& request) -> Result<Dictionary> {
    return extension.run(request).toJSON();
  });
  QXPlatform::Activity::waitUntilNone(QXPlatform::Clock::current().now() + kLongestWaitForWork);
  return answers;
}

Result<QXPlatform::PushAnswers> pushToProgram(const SimulatorOptions& simulator, const PushOptions& options) {
  setEnvironmentOf(*options.extension, simulator);
  const AttachmentsDirectory attachments(options.attachments);
  std::vector<std::string> arguments{"--time-limit", std::to_string(options.timeLimitSeconds), "--jobs",
                                     std::to_string(options.jobs)};
  if (attachments.path()) arguments.insert(arguments.end(), {"--attachments", *attachments.path()});
  ExtensionRun program(*options.extension, arguments);
  if (const auto problem = program.start()) return *problem;
  const auto limit = std::chrono::duration<double>(options.timeLimitSeconds) + kGraceForProgram;
  const auto answers = answerAll(simulator, options, [&](const auto& request) {
    return program.ask(QXPlatform::notificationRequestToJSON(*request), limit);
  });
  if (const auto problem = program.finish()) return *problem;
  return answers;
}

Result<HostBehaviour> makeHostBehaviour(const SimulatorOptions& simulator, const PushOptions& options) {
  HostBehaviour host{.logLevel = simulator.logLevel,
                     .showThumbnail = !options.noThumbnail,
                     .changes = std::nullopt,
                     .raiseReason = options.hookRaise,
                     .hang = options.hookHang};
  if (options.hookChanges) {
    const auto changes = QXPlatform::parseJSON(*options.hookChanges);
    if (changes) host.changes = changes->dictionary();
    if (!host.changes) {
      return Error{"--hook-changes: " + (changes ? "not a JSON object" : changes.error().message)};
    }
  }
  return host;
}

int finish(const Result<QXPlatform::PushAnswers>& answers) {
  if (!answers) return fail("push", answers.error().message);
  if (answers->outputFailed) return fail("push", "the results cannot be written");
  if (answers->errors == 0) return 0;
  return fail("push", std::to_string(answers->errors) +
                          (answers->errors == 1 ? " push was" : " pushes were") +
                          " refused; the answers say which and why");
}

}  // namespace

int runPush(const SimulatorOptions& simulator, const PushOptions& options) {
  const auto host = makeHostBehaviour(simulator, options);
  if (!host) {
    fail("push", host.error().message);
    return kWrongUsage;
  }
  return finish(options.extension ? pushToProgram(simulator, options)
                                  : pushToBuiltIn(simulator, options, *host));
}

}  // namespace qx
