#pragma once

#include <curl/curl.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXPlatform/libraries/network/CurlHandles.h"
#include "QXPlatform/libraries/network/Transfer.h"

namespace QXPlatform {

// Runs every transfer of the process on one thread, over one pool of connections. Any thread may call.
class Transport {
 public:
  // Stopped as the process exits: what is in flight then is never completed.
  static Transport& shared();

  // False when the system gives no thread or memory for the network at the moment: the transfer has not begun
  // and is never completed.
  [[nodiscard]] bool start(std::shared_ptr<Transfer> transfer);
  // Completes it with URLError::Code::cancelled, unless it has completed.
  void cancel(std::shared_ptr<Transfer> transfer);

 private:
  friend class NeverDestroyed<Transport>;
  struct Command {
    enum class Kind { start, cancel } kind;
    std::shared_ptr<Transfer> transfer;
  };

  Transport() = default;
  bool isRunning();
  bool openMulti();
  void stop();
  void give(Command command);

  void run();
  void moveOn();
  bool takeCommands();
  void begin(std::shared_ptr<Transfer> transfer);
  void collectEnded();
  void expireOverdue();
  void becomeWakeable();
  int pollMilliseconds() const;
  void finish(const Transfer* transfer, std::optional<URLError> error);
  bool isActive(const Transfer* transfer) const;

  std::mutex mutex_;
  // Below, guarded by mutex_; the thread alone replaces multi_ and may use it without.
  MultiHandle multi_;
  std::vector<Command> commands_;
  bool stopping_ = false;
  bool isInitialised_ = false;

  // Whether a call ends the thread's wait; not when descriptors were short as the wait was prepared.
  std::atomic<bool> wakeable_ = false;

  std::vector<std::shared_ptr<Transfer>> active_;  // on the thread alone
  std::thread thread_;
};

}  // namespace QXPlatform
