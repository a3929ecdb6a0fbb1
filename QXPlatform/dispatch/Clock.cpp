#include "QXPlatform/dispatch/Clock.h"

#include <algorithm>
#include <atomic>

#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXPlatform {
namespace {

class SteadyClock final : public Clock {
 public:
  TimePoint now() const override { return std::chrono::steady_clock::now(); }
  // Bounded, so that adding it to the present never overflows, whatever the deadline.
  Duration realTimeUntil(TimePoint deadline) const override {
    return std::min<Duration>(deadline - now(), std::chrono::hours(1));
  }
};

std::atomic<Clock*>& installedClock() {
  // Never destroyed: threads may still wait while the process exits.
  static NeverDestroyed<SteadyClock> steady;
  static std::atomic<Clock*> clock = &*steady;
  return clock;
}

}  // namespace

Clock& Clock::current() {
  return *installedClock().load(std::memory_order_acquire);
}

ScopedClock::ScopedClock(Clock& clock) : previous_(installedClock().exchange(&clock)) {}

ScopedClock::~ScopedClock() {
  installedClock().store(previous_);
}

}  // namespace QXPlatform
