#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/dispatch/Clock.h"
#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXTestSupport/Patience.h"

namespace QXTestSupport {

// While this lives, the framework's time stands still until the test moves it; threads that wait by it notice
// a move within a few milliseconds. Before it goes, all that waits by it has ended. One at a time.
class ManualClock {
 public:
  ManualClock() = default;
  ~ManualClock() {
    scope_.reset();
    clock_.advance(std::chrono::hours(24));
    QXPlatform::Activity::waitUntilNone(soon());
  }
  ManualClock(const ManualClock&) = delete;
  ManualClock& operator=(const ManualClock&) = delete;

  QXPlatform::Clock::TimePoint now() const { return clock_.now(); }
  void advance(QXPlatform::Clock::Duration duration) { clock_.advance(duration); }

  // Moves it second by second until the condition holds, and tells how many that took. From the `expected`
  // second on each is given time for what it sets off. Nothing when the condition does not come to hold.
  template <typename Condition>
  std::optional<int> secondsUntil(const Condition& condition, int expected) {
    for (int second = 1; second <= expected + 10; ++second) {
      advance(std::chrono::seconds(1));
      const auto patience = std::chrono::milliseconds(second < expected ? 40 : 2000);
      const auto end = std::chrono::steady_clock::now() + patience;
      while (std::chrono::steady_clock::now() < end) {
        if (condition()) return second;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
      }
    }
    return std::nullopt;
  }

 private:
  class Clock final : public QXPlatform::Clock {
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

  static std::vector<std::unique_ptr<Clock>>& clocks() {
    static QXPlatform::NeverDestroyed<std::vector<std::unique_ptr<Clock>>> all;
    return *all;
  }

  // Kept, so that a thread that still looks at it finds it.
  Clock& clock_ = *clocks().emplace_back(std::make_unique<Clock>());
  std::optional<QXPlatform::ScopedClock> scope_{std::in_place, clock_};
};

}  // namespace QXTestSupport
