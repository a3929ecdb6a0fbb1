#pragma once

#include <chrono>
#include <mutex>

#include "platform/dispatch/Clock.h"

namespace support {

// A clock that stands still until the test moves it. Install it with platform::ScopedClock; threads that wait
// by it notice a move within a few milliseconds.
class ManualClock final : public platform::Clock {
 public:
  TimePoint now() const override {
    const std::lock_guard lock(mutex_);
    return now_;
  }
  Duration realTimeUntil(TimePoint) const override { return std::chrono::milliseconds(2); }

  void advance(Duration duration) {
    const std::lock_guard lock(mutex_);
    now_ += duration;
  }

 private:
  mutable std::mutex mutex_;
  TimePoint now_ = std::chrono::steady_clock::now();
};

}  // namespace support
