#pragma once

#include <curl/curl.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXPlatform/libraries/network/CurlHandles.h"
#include "QXPlatform/libraries/network/Transfer.h"

namespace QXPlatform {

// Runs every transfer of the process over one pool of connections, on one thread at a time: a work item that
// is there while transfers are. So what has started a transfer and ends, or waits, needs no other thread to
// run it, and whoever waits for its outcome is called by the thread that the answer came to. The only thread
// that there is goes first to what else waits for it. Any thread may call.
class Transport {
 public:
  // Stopped as the process exits: what is in flight then is never completed.
  static Transport& shared();

  // False when there is no memory for the network at the moment: the transfer has not begun and is never
  // completed.
  [[nodiscard]] bool start(std::shared_ptr<Transfer> transfer);
  // Completes it with URLError::Code::cancelled, unless it has completed.
  void cancel(std::shared_ptr<Transfer> transfer);

 private:
  friend class NeverDestroyed<Transport>;
  struct Command {
    enum class Kind { start, cancel } kind;
    std::shared_ptr<Transfer> transfer;
  };
  // Of the work item.
  enum class Stage : std::uint8_t { ended, submitted, running };

  Transport() = default;
  bool isReady();
  void openMulti();
  void stop();
  void give(Command command);

  void run();
  bool moveOn();
  bool takeCommands();
  void carryOut(Command command);
  void begin(std::shared_ptr<Transfer> transfer);
  void collectEnded();
  void expireOverdue();
  bool await();
  bool comeBackLater();
  int pollMilliseconds() const;
  void finish(const Transfer* transfer, std::optional<URLError> error);
  bool isActive(const Transfer* transfer) const;

  // Not a serial queue, which would go on with the next item at once: there is one at a time as it is.
  const DispatchQueue queue_{"network", DispatchQueue::Attribute::concurrent};

  std::mutex mutex_;
  std::condition_variable ended_;
  // Below, guarded by mutex_.
  Stage stage_ = Stage::ended;
  std::vector<Command> commands_;
  bool stopping_ = false;
  bool isInitialised_ = false;

  // Below, replaced between two work items only, which may use them without the lock.
  MultiHandle multi_;
  // Whether a call ends the wait for an answer; not when descriptors were short as it was opened.
  bool wakeable_ = false;

  // Below, in the work item alone.
  std::vector<std::shared_ptr<Transfer>> active_;
};

}  // namespace QXPlatform
