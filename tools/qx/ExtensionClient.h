#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "agent/extensions/ExtensionProcess.h"

namespace qx {

// A host's own service-extension program, running, for threads that wait for its answers. Of requests with
// equal identifiers one at a time is asked. Whatever else the program prints goes to this process's standard
// error.
class ExtensionClient {
 public:
  static QXPlatform::Result<std::unique_ptr<ExtensionClient>> start(const QXAgent::ProgramStart& start);
  // As finish().
  ~ExtensionClient();
  ExtensionClient(const ExtensionClient&) = delete;
  ExtensionClient& operator=(const ExtensionClient&) = delete;

  // Blocks until the program has answered. An error when it refuses the request or ends first; when it takes
  // longer than `limit` it is ended. Any thread, several at once.
  // REQUIRES: `request` has an "identifier".
  QXPlatform::Result<QXPlatform::Dictionary> ask(const QXPlatform::Dictionary& request,
                                                 std::chrono::duration<double> limit);

  // Whether no more answers come.
  bool hasEnded() const {
    const std::lock_guard lock(mutex_);
    return process_.hasEnded();
  }

  // Ends the program's input and waits for it to exit, as long as work in flight may take; then ends it. An
  // error when it did not exit in good order, which exit code 1 is after a refusal. To be called when no
  // ask() is in progress.
  std::optional<QXPlatform::Error> finish();

 private:
  explicit ExtensionClient(QXAgent::StartedProgram started);

  // Lets the conversation go on until the program has ended.
  void converse();
  void end(const std::string& reason);
  QXPlatform::Result<QXPlatform::Dictionary> await(const QXPlatform::Dictionary& request,
                                                   std::chrono::duration<double> limit);
  std::optional<QXPlatform::Error> judgeExit(int status) const;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  QXAgent::ExtensionProcess process_;  // guarded by mutex_
  std::set<std::string> inHand_;       // guarded by mutex_
  bool finished_ = false;
  std::thread conversation_;
};

}  // namespace qx
