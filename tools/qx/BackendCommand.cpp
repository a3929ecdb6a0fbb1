#include "tools/qx/BackendCommand.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/backend/LoopbackServer.h"
#include "tools/backend/RequestLine.h"
#include "tools/qx/BackendScript.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;

using Clock = std::chrono::steady_clock;

// SIGINT and SIGTERM, to be asked for instead of acted upon. Made before any other thread, so that all
// inherit it.
class EndSignals {
 public:
  EndSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  }
  void wait() const {
    int received = 0;
    sigwait(&signals_, &received);
  }
  // Whether one came within the time.
  bool waitFor(std::chrono::milliseconds time) const {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const timespec limit{seconds.count(), std::chrono::nanoseconds(time - seconds).count()};
    return sigtimedwait(&signals_, nullptr, &limit) >= 0;
  }

 private:
  sigset_t signals_{};
};

// The POST requests that came, and how many of them have their answer. Any thread.
class PostCount {
 public:
  void came(const backend::Request& request) {
    if (request.method == "POST") ++came_;
  }
  void answered(const backend::Request& request) {
    if (request.method == "POST") ++answered_;
  }
  std::int64_t cameSoFar() const { return came_; }
  bool isComplete(std::int64_t expected) const { return came_ >= expected && answered_ >= came_; }

 private:
  std::atomic<std::int64_t> came_ = 0;
  std::atomic<std::int64_t> answered_ = 0;
};

Dictionary whereItListens(const backend::LoopbackServer& server, bool tls) {
  const Dictionary listening{{"listening", server.url()}};
  return tls ? listening.setting("caFile", server.caFile().native()) : listening;
}

// The answer to whatever is not served as a file.
backend::Response standardAnswer(const BackendOptions& options) {
  return {.status = options.status,
          .headers = {{"Content-Type", "application/json"}},
          .body = options.body,
          .delay = std::chrono::round<std::chrono::milliseconds>(
              std::chrono::duration<double>(options.delaySeconds))};
}

// What the server's threads and the command share.
struct Conversation {
  explicit Conversation(const BackendOptions& options, const std::vector<ScriptedAnswer>& answers)
      : script(answers, standardAnswer(options)) {}

  std::mutex output;  // held by whoever writes to standard output
  PostCount posts;
  BackendScript script;
};

backend::LoopbackServerOptions serverOptions(const BackendOptions& options, QXPlatform::JSONStyle style,
                                             Conversation& conversation) {
  const backend::Response standard = standardAnswer(options);
  return {.port = options.port,
          .status = standard.status,
          .body = standard.body,
          .delay = standard.delay,
          .hang = options.hang,
          .close = options.close,
          .files = options.files,
          .keepsRequests = false,
          .tls = options.tls,
          .handler = [&](const backend::Request& request) { return conversation.script.answer(request); },
          .onRequest =
              [style, &conversation](const backend::Request& request) {
                conversation.posts.came(request);
                const std::lock_guard lock(conversation.output);
                std::cout << backend::requestLine(request, style) << std::endl;
              },
          .onAnswered = [&](const backend::Request& request) { conversation.posts.answered(request); }};
}

// Until all have come and been answered, or their time is over, or a signal asks for the end.
int waitForPosts(const BackendOptions& options, const EndSignals& end, const PostCount& posts) {
  constexpr std::chrono::milliseconds kPause(10);
  const auto deadline = Clock::now() + std::chrono::duration<double>(options.withinSeconds);
  while (!posts.isComplete(*options.expect) && Clock::now() < deadline && !end.waitFor(kPause)) {
  }
  if (posts.cameSoFar() >= *options.expect) return 0;
  return fail("backend", std::to_string(posts.cameSoFar()) + " of " + std::to_string(*options.expect) +
                             " POST requests came in time");
}

}  // namespace

int runBackend(const SimulatorOptions& simulator, const BackendOptions& options) {
  const EndSignals end;
  const auto style = simulator.pretty ? QXPlatform::JSONStyle::pretty : QXPlatform::JSONStyle::compact;
  const auto answers = options.script ? BackendScript::read(*options.script) : std::vector<ScriptedAnswer>();
  if (!answers) return fail("backend", answers.error().message);
  Conversation conversation(options, *answers);
  try {
    // A request may come before this knows that it listens.
    std::unique_lock announcing(conversation.output);
    const backend::LoopbackServer server(serverOptions(options, style, conversation));
    printResult(simulator, whereItListens(server, options.tls));
    // Where it listens is lost with an output that fails.
    const bool isLost = !std::cout;
    announcing.unlock();
    if (isLost) return 0;
    if (options.expect) return waitForPosts(options, end, conversation.posts);
    end.wait();
  } catch (const std::runtime_error& error) {
    return fail("backend", error.what());
  }
  return 0;
}

}  // namespace qx
