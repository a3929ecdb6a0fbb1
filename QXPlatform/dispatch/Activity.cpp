#include "QXPlatform/dispatch/Activity.h"

#include <atomic>
#include <cstdint>
#include <utility>

#include "QXPlatform/dispatch/ThreadSet.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXPlatform {
namespace {

struct WorkInFlight {
  std::atomic<std::int64_t> count{0};
  std::mutex mutex;
  std::condition_variable none;
};

WorkInFlight& workInFlight() {
  static NeverDestroyed<WorkInFlight> shared;
  return *shared;
}

thread_local Activity* currentActivity = nullptr;

}  // namespace

// Of what has come of one piece of work: in flight as a whole as long as a part of it is.
class Activity::Count {
 public:
  void enter() {
    if (parts_.fetch_add(1, std::memory_order_relaxed) > 0) return;
    workInFlight().count.fetch_add(1, std::memory_order_relaxed);
  }

  void leave() {
    if (parts_.fetch_sub(1, std::memory_order_acq_rel) > 1) return;
    WorkInFlight& work = workInFlight();
    if (work.count.fetch_sub(1, std::memory_order_acq_rel) > 1) return;
    // The lock keeps this from falling between a waiter's look at the count and its going to sleep.
    { const std::lock_guard lock(work.mutex); }
    work.none.notify_all();
  }

 private:
  std::atomic<std::int64_t> parts_{0};
};

Activity::Activity()
    : count_(currentActivity != nullptr && currentActivity->counted_ ? currentActivity->count_
                                                                     : std::make_shared<Count>()) {
  begin();
}

Activity::Activity(Activity&& other) noexcept
    : count_(std::move(other.count_)), counted_(std::exchange(other.counted_, false)) {}

Activity::~Activity() {
  if (counted_) end();
}

void Activity::begin() {
  counted_ = true;
  count_->enter();
}

void Activity::end() {
  counted_ = false;
  count_->leave();
}

bool Activity::waitUntilNone(Clock::TimePoint deadline) {
  if (!ThreadSet::shared().canRun()) return false;
  WorkInFlight& work = workInFlight();
  std::unique_lock lock(work.mutex);
  return Clock::current().waitUntil(lock, work.none, deadline,
                                    [&] { return work.count.load(std::memory_order_acquire) == 0; });
}

CurrentActivityScope::CurrentActivityScope(Activity& activity)
    : previous_(std::exchange(currentActivity, &activity)) {}

CurrentActivityScope::~CurrentActivityScope() {
  currentActivity = previous_;
}

bool CurrentActivityScope::exists() {
  return currentActivity != nullptr;
}

ForeignCodeScope::ForeignCodeScope()
    : suspended_(currentActivity != nullptr && currentActivity->counted_ ? currentActivity : nullptr) {
  if (suspended_ == nullptr) return;
  suspended_->end();
  ThreadSet::shared().enterForeignCode();
}

ForeignCodeScope::~ForeignCodeScope() {
  if (suspended_ == nullptr) return;
  ThreadSet::shared().leaveForeignCode();
  suspended_->begin();
}

}  // namespace QXPlatform
