#include "QXPlatform/dispatch/DispatchGroup.h"

#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

#include "QXPlatform/dispatch/ThreadSet.h"
#include "QXPlatform/foundation/FatalError.h"

namespace QXPlatform {

class DispatchGroup::State {
 public:
  void enter() {
    const std::lock_guard lock(mutex_);
    ++members_;
  }

  void leave() {
    std::vector<Notification> due;
    {
      const std::lock_guard lock(mutex_);
      if (members_ == 0) fatalError("A dispatch group was left more often than entered");
      if (--members_ > 0) return;
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

  std::mutex mutex_;
  std::condition_variable empty_;
  // Below, guarded by mutex_.
  std::size_t members_ = 0;
  std::vector<Notification> notifications_;
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
