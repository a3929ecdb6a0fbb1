#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "QXPlatform/dispatch/Clock.h"

namespace QXPlatform {

// Calls back when a time has come, on a thread of its own, which is there from the first limit on and sleeps
// until the earliest it knows of: who sets one that is later wakes nobody. Any thread.
class TimeLimits {
 public:
  using Limit = std::pair<Clock::TimePoint, std::uint64_t>;

  TimeLimits() = default;
  // Calls that have begun have ended; others never come.
  ~TimeLimits();
  TimeLimits(const TimeLimits&) = delete;
  TimeLimits& operator=(const TimeLimits&) = delete;

  // `passed` must not keep the thread, on which the other limits are waited for. Nothing while the system has
  // no thread for it: nobody would wait for the limit.
  std::optional<Limit> set(Clock::TimePoint deadline, std::function<void()> passed);
  // Does nothing to one that has passed.
  void remove(const Limit& limit);

 private:
  bool hasKeeper();
  void keep();

  std::mutex mutex_;
  std::condition_variable changed_;
  // Below, guarded by mutex_.
  std::map<Limit, std::function<void()>> limits_;
  std::uint64_t lastNumber_ = 0;
  Clock::TimePoint sleepsUntil_ = Clock::TimePoint::max();
  const Clock* sleepsBy_ = nullptr;
  bool ends_ = false;
  std::thread keeper_;
};

}  // namespace QXPlatform
