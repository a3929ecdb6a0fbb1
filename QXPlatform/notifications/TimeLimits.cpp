#include "QXPlatform/notifications/TimeLimits.h"

#include <system_error>

#include "QXPlatform/dispatch/BriefLock.h"
#include "QXPlatform/dispatch/ThreadName.h"

namespace QXPlatform {

TimeLimits::~TimeLimits() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  changed_.notify_one();
  if (keeper_.joinable()) keeper_.join();
}

std::optional<TimeLimits::Limit> TimeLimits::set(Clock::TimePoint deadline, std::function<void()> passed) {
  const auto lock = lockBriefly(mutex_);
  if (!hasKeeper()) return std::nullopt;
  const Limit limit{deadline, ++lastNumber_};
  limits_.emplace(limit, std::move(passed));
  if (deadline < sleepsUntil_ || sleepsBy_ != &Clock::current()) changed_.notify_one();
  return limit;
}

// What a call-back holds is let go outside the lock.
void TimeLimits::remove(const Limit& limit) {
  const auto removed = [&] {
    const auto lock = lockBriefly(mutex_);
    return limits_.extract(limit);
  }();
}

bool TimeLimits::hasKeeper() {
  if (keeper_.joinable()) return true;
  try {
    keeper_ = std::thread([this] { keep(); });
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

void TimeLimits::keep() {
  setCurrentThreadName("time.limits");
  std::unique_lock lock(mutex_);
  while (!ends_) {
    const Clock& clock = Clock::current();
    const auto first = limits_.begin();
    sleepsUntil_ = first == limits_.end() ? Clock::TimePoint::max() : first->first.first;
    sleepsBy_ = &clock;
    if (first == limits_.end()) {
      changed_.wait(lock);
    } else if (clock.now() < sleepsUntil_) {
      changed_.wait_for(lock, clock.realTimeUntil(sleepsUntil_));
    } else {
      auto passed = limits_.extract(first);
      lock.unlock();
      passed.mapped()();
      passed = {};
      lock.lock();
    }
  }
}

}  // namespace QXPlatform
