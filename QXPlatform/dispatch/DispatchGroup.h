#pragma once

#include <functional>
#include <memory>

#include "QXPlatform/dispatch/Clock.h"
#include "QXPlatform/dispatch/DispatchQueue.h"

namespace QXPlatform {

// Counts pieces of work and tells when none is left. A handle, as DispatchQueue. Any thread may call.
class DispatchGroup {
 public:
  DispatchGroup();

  void enter() const;
  // A leave() without its enter() is a programming error and stops the process.
  void leave() const;
  // Submits `work` to the queue once the group is empty, at once if it is now.
  void notify(const DispatchQueue& queue, DispatchQueue::Work work) const;
  // Blocks until the group is empty or the deadline has passed; returns whether it is empty. At once when
  // what has been submitted waits for a thread, and the system gives this process none but the calling one.
  bool wait(Clock::TimePoint deadline) const;

 private:
  class State;

  std::shared_ptr<State> state_;
};

}  // namespace QXPlatform
