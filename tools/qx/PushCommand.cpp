#include "tools/qx/PushCommand.h"

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <memory>
#include <thread>
#include <utility>

#include "QXExtensionSDK/runtime/logging/LogLevel.h"
#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/MemoryUse.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/notifications/PushLines.h"
#include "QXPlatform/notifications/ServiceExtensionHost.h"
#include "tools/qx/AttachmentsDirectory.h"
#include "tools/qx/ExtensionEnvironment.h"
#include "tools/qx/ExtensionLog.h"
#include "tools/qx/ExtensionRun.h"
#include "tools/qx/HostContainer.h"
#include "tools/qx/JUnit.h"
#include "tools/qx/NamedPushes.h"
#include "tools/qx/Progress.h"
#include "tools/qx/PushFiles.h"
#include "tools/qx/PushForPeople.h"
#include "tools/qx/Results.h"
#include "tools/qx/SimulatedHostService.h"
#include "tools/qx/Stable.h"
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

// What a run of pushes is about.
struct Run {
  const SimulatorOptions& simulator;
  const PushOptions& options;
  PushVerdicts& verdicts;
};

// What has come of it.
struct Ended {
  QXPlatform::PushAnswers answers;
  std::optional<Error> death;  // of the program, when no push came after it
};

std::string fileOf(const PushOptions& options, const QXPlatform::PushText& push) {
  const std::string name = !push.source.empty()    ? push.source
                           : options.files.empty() ? "-"
                                                   : options.files.front();
  return name == "-" ? "standard input" : name;
}

// A verdict is kept until the end, so that a long run without judgement must not have any.
bool isJudged(const PushOptions& options) {
  return options.junit || !options.failOn.empty();
}

// Appends the text of an answer, of which the verdicts hear first.
void present(std::string& text, const Run& run, const QXPlatform::AnsweredPush& answered,
             const AttachmentsDirectory& attachments) {
  Result<Dictionary> answer = answered.answer;
  if (answer && run.simulator.stable) answer = stableAnswer(*answer, attachments.path());
  const QXPlatform::AnsweredPush shown{answered.push, answered.position, answer};
  if (isJudged(run.options)) {
    run.verdicts.note(shown, fileOf(run.options, shown.push) + ":" + std::to_string(shown.push.line));
  }
  if (isForPeople(run.simulator)) {
    text += pushForPeople(shown, isInColour());
  } else {
    appendResult(text, run.simulator, answerToJSON(shown));
  }
}

QXPlatform::PushAnswers answerAll(const Run& run, const AttachmentsDirectory& attachments,
                                  const decltype(QXPlatform::PushAnswering::answer)& answer) {
  PushFiles files(run.options.files);
  NamedPushes source(files, run.options.identifier, run.simulator.stable);
  Progress progress("pushes");
  std::function<void(std::size_t)> showProgress;
  if (Progress::isSeen()) {
    showProgress = [&](std::size_t answered) { progress.show(answered, files.partOf(answered)); };
  }
  return QXPlatform::answerPushes(
      source, std::cout,
      {.answer = answer,
       .jobs = run.options.jobs,
       .present = [&](auto& text, const auto& answered) { present(text, run, answered, attachments); },
       .progress = showProgress});
}

// Beside those of the jobs: the caller's, the one that keeps time, one that looks out, one that stands in.
constexpr std::size_t kOtherThreads = 4;

// A pool for each thread: jobs go from thread to thread, and two that have come to share a pool sleep at its
// lock again and again. With more jobs than processors, one for each of these and one more, since threads
// meet in them by chance: with more than that the run grows for longer, and is no faster.
int memoryPools(std::size_t jobs) {
  if (jobs == 1) return 1;
  const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
  return static_cast<int>(jobs <= processors ? jobs + kOtherThreads : processors + 1);
}

Ended pushToBuiltIn(const Run& run, const HostBehaviour& host) {
  const PushOptions& options = run.options;
  QXPlatform::keepMemoryUseEven(memoryPools(options.jobs));
  StandardErrorLogSink sink(run.simulator.logFormat);
  JudgedLog judged(sink, run.verdicts);
  const QXPlatform::ScopedLogSink logging(judged);
  const AttachmentsDirectory attachments(options.attachments);
  QXPlatform::ServiceExtensionHost extension([&] { return std::make_shared<SimulatedHostService>(host); },
                                             std::chrono::duration<double>(options.timeLimitSeconds),
                                             attachments.path());
  const auto answers =
      answerAll(run, attachments, [&](const auto& request, QXPlatform::PushCompletion completion) {
        extension.start(request, [completion = std::move(completion)](const auto& result) {
          completion(result.toJSON());
        });
      });
  QXPlatform::Activity::waitUntilNone(QXPlatform::Clock::current().now() + kLongestWaitForWork);
  return {answers, std::nullopt};
}

Result<Ended> pushToProgram(const Run& run) {
  const PushOptions& options = run.options;
  const AttachmentsDirectory attachments(options.attachments);
  std::vector<std::string> arguments{"--time-limit", std::to_string(options.timeLimitSeconds), "--jobs",
                                     std::to_string(options.jobs)};
  if (attachments.path()) arguments.insert(arguments.end(), {"--attachments", *attachments.path()});
  std::unique_ptr<ExtensionLog> log;
  if (run.verdicts.failsOn(PushFailure::logError)) {
    auto opened = ExtensionLog::open(run.simulator.logFormat, [&run](const auto& record, const auto& push) {
      run.verdicts.note(record, push);
    });
    if (!opened) return opened.error();
    log = *std::move(opened);
  }
  SimulatorOptions shownTo = run.simulator;
  if (log != nullptr) shownTo.logFormat = LogFormat::json;
  setEnvironmentOf(*options.extension, shownTo);
  ExtensionRun program({.program = *options.extension,
                        .arguments = arguments,
                        .environment = {},
                        .errorOutput = log != nullptr ? log->descriptor() : STDERR_FILENO});
  if (const auto problem = program.start()) return *problem;
  const auto limit = std::chrono::duration<double>(options.timeLimitSeconds) + kGraceForProgram;
  const auto answers = answerAll(run, attachments, [&](const auto& request, const auto& completion) {
    completion(program.ask(QXPlatform::notificationRequestToJSON(*request), limit));
  });
  return Ended{answers, program.finish()};
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

// Errors must be logged to be seen.
SimulatorOptions withLogFor(const PushVerdicts& verdicts, SimulatorOptions simulator) {
  using QXExtensionSDK::LogLevel;
  if (verdicts.failsOn(PushFailure::logError))
    simulator.logLevel = std::min(simulator.logLevel, LogLevel::error);
  return simulator;
}

int reportFailures(const std::vector<TestCase>& cases) {
  const auto failed = [](const TestCase& each) { return !each.failures.empty(); };
  const auto first = std::ranges::find_if(cases, failed);
  if (first == cases.end()) return 0;
  const auto count = std::ranges::count_if(cases, failed);
  return fail("push", std::to_string(count) + (count == 1 ? " push" : " pushes") + " failed, first " +
                          first->name + ": " + first->failures.front());
}

// The exit code.
int reportAnswers(const QXPlatform::PushAnswers& answers, const Run& run) {
  if (answers.outputFailed) return fail("push", "the results cannot be written");
  if (isForPeople(run.simulator)) std::cout << receiptsForPeople() << std::flush;
  const auto cases = run.verdicts.testCases();
  if (run.options.junit) {
    const auto problem = writeJUnit(*run.options.junit, "qx push", cases);
    if (problem) return fail("push", problem->message);
  }
  const int exitCode = reportFailures(cases);
  if (answers.errors == 0) return exitCode;
  return fail("push", std::to_string(answers.errors) + (answers.errors == 1 ? " push was" : " pushes were") +
                          " refused; the answers say which and why");
}

int finish(const Result<Ended>& ended, const Run& run) {
  if (!ended) return fail("push", ended.error().message);
  const int ofDeath = ended->death ? fail("push", ended->death->message) : 0;
  return std::max(ofDeath, reportAnswers(ended->answers, run));
}

}  // namespace

int runPush(const SimulatorOptions& asked, const PushOptions& options) {
  PushVerdicts verdicts(options.failOn);
  const SimulatorOptions simulator = withLogFor(verdicts, asked);
  const auto host = makeHostBehaviour(simulator, options);
  if (!host) {
    fail("push", host.error().message);
    return kWrongUsage;
  }
  warnOfNoContainersRoot("push");
  const Run run{simulator, options, verdicts};
  return finish(options.extension ? pushToProgram(run) : pushToBuiltIn(run, *host), run);
}

}  // namespace qx
