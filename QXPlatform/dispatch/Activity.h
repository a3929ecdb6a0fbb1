#pragma once

#include <memory>

#include "QXPlatform/dispatch/Clock.h"

namespace QXPlatform {

// Stands for one piece of work in flight (a queued or running work item, a network task), so that a process
// can let such work end before it exits. Hold it where the work is held. A moved-from one stands for nothing.
// What comes of one piece of work is counted together, so that busy threads seldom meet at the count.
class Activity {
 public:
  Activity();
  Activity(Activity&& other) noexcept;
  Activity& operator=(Activity&&) = delete;
  ~Activity();

  // Blocks until nothing is in flight or the deadline has passed; returns whether nothing is. Does not wait
  // for items that no thread can be had for.
  static bool waitUntilNone(Clock::TimePoint deadline);

 private:
  friend class ForeignCodeScope;
  class Count;

  void begin();
  void end();

  std::shared_ptr<Count> count_;
  bool counted_ = false;
};

// Names the activity of the work item that this thread runs while this lives.
class CurrentActivityScope {
 public:
  explicit CurrentActivityScope(Activity& activity);
  ~CurrentActivityScope();
  // Whether this thread runs a work item.
  static bool exists();
  CurrentActivityScope(const CurrentActivityScope&) = delete;
  CurrentActivityScope& operator=(const CurrentActivityScope&) = delete;

 private:
  Activity* const previous_;
};

// Says that the current work item runs foreign code that may never return: while this lives, the item does
// not count as work in flight, nor its thread among those that the process may have. Outside a work item it
// does nothing.
class ForeignCodeScope {
 public:
  ForeignCodeScope();
  ~ForeignCodeScope();
  ForeignCodeScope(const ForeignCodeScope&) = delete;
  ForeignCodeScope& operator=(const ForeignCodeScope&) = delete;

 private:
  // The activity that this scope took out of the count, if any.
  Activity* const suspended_;
};

}  // namespace QXPlatform
