#include "QXPlatform/dispatch/DispatchGroup.h"

#include <atomic>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

#include "QXPlatform/dispatch/ThreadSet.h"
#include "QXPlatform/foundation/FatalError.h"

namespace QXPlatform {

class DispatchGroup::State {
 public:
  void enter() { members_.fetch_add(1); }

  void leave() {
    if (isLeftToOthers()) return;
    std::vector<Notification> due;
    {
      const std::lock_guard lock(mutex_);
      const std::size_t before = members_.fetch_sub(1);
      if (before == 0) fatalError("A dispatch group was left more often than entered");
      if (before > 1) return;
      due.swap(notifications_);
    }
    empty_.notify_all();
    for (Notification& notification : due) notification.queue.async(std::move(notification.work));
  }

  void notify(const DispatchQueue& queue, DispatchQueue::Work work) {
    {
      const std::lock_guard lock(mutex_);
      if (members_ > 0) {
        notifications_.push_back({queue, std::move(work)});
        return;
      }
    }
    queue.async(std::move(work));
  }

  bool wait(Clock::TimePoint deadline) {
    std::unique_lock lock(mutex_);
    if (members_ > 0 && !ThreadSet::shared().aboutToWait()) return false;
    return Clock::current().waitUntil(lock, empty_, deadline, [&] { return members_ == 0; });
  }

 private:
  struct Notification {
    DispatchQueue queue;
    DispatchQueue::Work work;
  };

  bool isLeftToOthers() {
    std::size_t members = members_.load();
    while (members > 1) {
      if (members_.compare_exchange_weak(members, members - 1)) return true;
    }
    return false;
  }

  std::mutex mutex_;
  std::condition_variable empty_;
  std::atomic<std::size_t> members_ = 0;     // becomes none under mutex_
  std::vector<Notification> notifications_;  // guarded by mutex_
};

DispatchGroup::DispatchGroup() : state_(std::make_shared<State>()) {}

void DispatchGroup::enter() const {
  state_->enter();
}

// Held by value here and below: whoever is woken may drop the handle that this was called through.
void DispatchGroup::leave() const {
  const std::shared_ptr<State> state = state_;
  state->leave();
}

void DispatchGroup::notify(const DispatchQueue& queue, DispatchQueue::Work work) const {
  state_->notify(queue, std::move(work));
}

bool DispatchGroup::wait(Clock::TimePoint deadline) const {
  const std::shared_ptr<State> state = state_;
  return state->wait(deadline);
}

}  // namespace QXPlatform
