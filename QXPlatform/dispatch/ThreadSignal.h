#pragma once

#include <chrono>
#include <memory>

namespace QXPlatform {

// Calls one thread that waits, or is about to: each send() ends one wait(). Costs one system call on either
// side, where a condition variable with its mutex takes two or more. Any thread may send, one waits.
class ThreadSignal {
 public:
  ThreadSignal();
  ~ThreadSignal();
  ThreadSignal(const ThreadSignal&) = delete;
  ThreadSignal& operator=(const ThreadSignal&) = delete;

  void send();
  void wait();
  // False when nothing was sent in that time.
  bool waitFor(std::chrono::nanoseconds patience);

 private:
  class Count;

  const std::unique_ptr<Count> sent_;  // and not waited for yet
};

}  // namespace QXPlatform
