#include "tools/qx/BackendCommand.h"

#include <chrono>
#include <csignal>
#include <iostream>
#include <mutex>
#include <stdexcept>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/backend/LoopbackServer.h"
#include "tools/backend/RequestLine.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;

// SIGINT and SIGTERM, waited for instead of acted upon. Made before any other thread, so that all inherit it.
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

 private:
  sigset_t signals_{};
};

Dictionary whereItListens(const backend::LoopbackServer& server, bool tls) {
  const Dictionary listening{{"listening", server.url()}};
  return tls ? listening.setting("caFile", server.caFile().native()) : listening;
}

// `output`: held by whoever writes to standard output.
backend::LoopbackServerOptions serverOptions(const BackendOptions& options, QXPlatform::JSONStyle style,
                                             std::mutex& output) {
  return {.port = options.port,
          .status = options.status,
          .body = options.body,
          .delay = std::chrono::round<std::chrono::milliseconds>(
              std::chrono::duration<double>(options.delaySeconds)),
          .hang = options.hang,
          .close = options.close,
          .files = options.files,
          .keepsRequests = false,
          .tls = options.tls,
          .onRequest = [style, &output](const backend::Request& request) {
            const std::lock_guard lock(output);
            std::cout << backend::requestLine(request, style) << std::endl;
          }};
}

}  // namespace

int runBackend(const SimulatorOptions& simulator, const BackendOptions& options) {
  const EndSignals end;
  const auto style = simulator.pretty ? QXPlatform::JSONStyle::pretty : QXPlatform::JSONStyle::compact;
  std::mutex output;
  try {
    // A request may come before this knows that it listens.
    std::unique_lock announcing(output);
    const backend::LoopbackServer server(serverOptions(options, style, output));
    printResult(simulator, whereItListens(server, options.tls));
    announcing.unlock();
    // Where it listens is lost with an output that fails.
    if (std::cout) end.wait();
  } catch (const std::runtime_error& error) {
    return fail("backend", error.what());
  }
  return 0;
}

}  // namespace qx
