#pragma once

#include "platform/dispatch/Clock.h"

namespace platform {

// Stands for one piece of work in flight (a queued or running work item, a network task), so that a process
// can let such work end before it exits. Movable in spirit, not in C++: hold it where the work is held.
class Activity {
 public:
  Activity();
  ~Activity();
  Activity(const Activity&) = delete;
  Activity& operator=(const Activity&) = delete;

  // Blocks until nothing is in flight or the deadline has passed; returns whether nothing is.
  static bool waitUntilNone(Clock::TimePoint deadline);
};

// Says that the current work item runs foreign code that may never return: while this lives, the item does
// not count as work in flight. Outside a work item it does nothing.
class ForeignCodeScope {
 public:
  ForeignCodeScope();
  ~ForeignCodeScope();
  ForeignCodeScope(const ForeignCodeScope&) = delete;
  ForeignCodeScope& operator=(const ForeignCodeScope&) = delete;

 private:
  bool counted_;
};

}  // namespace platform
