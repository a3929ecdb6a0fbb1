#pragma once

#include <curl/curl.h>

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
  // Started by the first call, stopped as the process exits: what is in flight then is never completed.
  static Transport& shared();

  void start(std::shared_ptr<Transfer> transfer);
  // Completes it with URLError::Code::cancelled, unless it has completed.
  void cancel(std::shared_ptr<Transfer> transfer);

 private:
  friend class NeverDestroyed<Transport>;
  struct Command {
    enum class Kind { start, cancel } kind;
    std::shared_ptr<Transfer> transfer;
  };

  Transport();
  void stop();
  void give(Command command);

  void run();
  bool takeCommands();
  void begin(std::shared_ptr<Transfer> transfer);
  void collectEnded();
  void expireOverdue();
  int pollMilliseconds() const;
  void finish(const Transfer* transfer, std::optional<URLError> error);
  bool isActive(const Transfer* transfer) const;

  MultiHandle multi_;

  std::mutex mutex_;
  std::vector<Command> commands_;  // guarded by mutex_
  bool stopping_ = false;          // guarded by mutex_

  std::vector<std::shared_ptr<Transfer>> active_;  // on the thread alone
  std::thread thread_;
};

}  // namespace QXPlatform
