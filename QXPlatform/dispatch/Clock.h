#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace QXPlatform {

// The time that every wait in the process is measured by: queues' deadlines, network time-outs, the
// extension's time limit. Tests install one that they move by hand. Any thread.
class Clock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::steady_clock::duration;

  virtual ~Clock() = default;
  virtual TimePoint now() const = 0;
  // How long a thread that waits for `deadline` may really block before it must look at now() again.
  virtual Duration realTimeUntil(TimePoint deadline) const = 0;

  // The process's clock: steady_clock unless a test has installed another.
  static Clock& current();

  // Blocks until `condition()` holds or the deadline has passed; returns condition().
  // `lock` guards what the condition reads; whoever changes that notifies `changed`.
  template <typename Condition>
  bool waitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& changed, TimePoint deadline,
                 Condition condition) const {
    while (!condition()) {
      if (now() >= deadline) return condition();
      changed.wait_for(lock, realTimeUntil(deadline));
    }
    return true;
  }
};

// Replaces Clock::current() for as long as it lives. The clock must outlive every wait that began with it.
class ScopedClock {
 public:
  explicit ScopedClock(Clock& clock);
  ~ScopedClock();
  ScopedClock(const ScopedClock&) = delete;
  ScopedClock& operator=(const ScopedClock&) = delete;

 private:
  Clock* previous_;
};

}  // namespace QXPlatform
