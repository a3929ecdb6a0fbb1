#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/qx/ExtensionClient.h"

namespace qx {

// A host's own program through all the pushes of a run. When it dies, what it has in hand is answered with an
// error, and the next push starts it again; each death is one line on standard error.
class ExtensionRun {
 public:
  explicit ExtensionRun(QXAgent::ProgramStart start);

  // Starts the program, so that one that cannot be is known before the first push.
  std::optional<QXPlatform::Error> start();
  // As ExtensionClient::ask().
  QXPlatform::Result<QXPlatform::Dictionary> ask(const QXPlatform::Dictionary& request,
                                                 std::chrono::duration<double> limit);
  // As ExtensionClient::finish(), of the program that runs last.
  std::optional<QXPlatform::Error> finish();

 private:
  QXPlatform::Result<std::shared_ptr<ExtensionClient>> running();
  void bury(ExtensionClient* client) const;

  const QXAgent::ProgramStart start_;
  std::mutex mutex_;
  std::atomic<bool> isOver_ = false;
  std::shared_ptr<ExtensionClient> client_;  // guarded by mutex_
};

}  // namespace qx
