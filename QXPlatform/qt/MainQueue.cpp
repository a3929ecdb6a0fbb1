#include "QXPlatform/ui/MainQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXPlatform {

namespace {

// Keeps the waiting work, and wakes the application's thread for it by way of an object that lives there and
// goes with the application.
class MainQueue {
 public:
  static MainQueue& shared() {
    static NeverDestroyed<MainQueue> queue;
    return *queue;
  }

  void begin() {
    const std::lock_guard lock(mutex_);
    if (!ended_ && receiver_ == nullptr) makeReceiver();
  }

  void post(std::function<void()> work) {
    const std::lock_guard lock(mutex_);
    if (ended_ || QCoreApplication::instance() == nullptr) return;
    if (receiver_ == nullptr) makeReceiver();
    waiting_.push_back(std::move(work));
    const std::lock_guard wakeUpLock(wakeUpMutex_);
    QCoreApplication::postEvent(receiver_, new QEvent(QEvent::User));
  }

 private:
  class Receiver final : public QObject {
   public:
    bool event(QEvent* event) override {
      if (!shared().isWakeUp(*event)) return QObject::event(event);
      shared().runNext();
      return true;
    }
  };

  void makeReceiver() {
    receiver_ = new Receiver;
    receiver_->moveToThread(QCoreApplication::instance()->thread());
    qAddPostRoutine([] { shared().end(); });
  }

  // The event was made under this lock on another thread, so it is looked at under it: the toolkit's own
  // locks are invisible to the race detector.
  bool isWakeUp(const QEvent& event) {
    const std::lock_guard lock(wakeUpMutex_);
    return event.type() == QEvent::User;
  }

  // Once for each piece of work.
  void runNext() {
    std::function<void()> work;
    {
      const std::lock_guard lock(mutex_);
      work = std::move(waiting_.front());
      waiting_.pop_front();
    }
    work();
  }

  void end() {
    QObject* receiver = nullptr;
    std::deque<std::function<void()>> dropped;  // outside the lock: its destruction may call back here
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
      receiver = std::exchange(receiver_, nullptr);
      dropped.swap(waiting_);
    }
    delete receiver;
  }

  std::mutex wakeUpMutex_;
  std::mutex mutex_;
  QObject* receiver_ = nullptr;                // guarded by mutex_
  std::deque<std::function<void()>> waiting_;  // guarded by mutex_
  bool ended_ = false;                         // guarded by mutex_
};

}  // namespace

void beginMainQueue() {
  MainQueue::shared().begin();
}

void dispatchMainAsync(std::function<void()> work) {
  MainQueue::shared().post(std::move(work));
}

}  // namespace QXPlatform
