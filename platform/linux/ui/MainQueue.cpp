#include "platform/ui/MainQueue.h"

#include <QCoreApplication>
#include <QObject>
#include <mutex>
#include <utility>

namespace platform {

namespace {

// Holds the object that waiting work is addressed to; that lives on the application's thread and goes with
// it.
class MainReceiver {
 public:
  static MainReceiver& shared() {
    static MainReceiver receiver;
    return receiver;
  }

  void post(std::function<void()> work) {
    const std::lock_guard lock(mutex_);
    if (ended_ || QCoreApplication::instance() == nullptr) return;
    if (object_ == nullptr) makeObject();
    QMetaObject::invokeMethod(object_, std::move(work), Qt::QueuedConnection);
  }

 private:
  void makeObject() {
    object_ = new QObject;
    object_->moveToThread(QCoreApplication::instance()->thread());
    qAddPostRoutine([] { shared().end(); });
  }

  void end() {
    QObject* object = nullptr;
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
      object = std::exchange(object_, nullptr);
    }
    delete object;  // and with it the waiting work, whose destruction may call back here
  }

  std::mutex mutex_;
  QObject* object_ = nullptr;  // guarded by mutex_
  bool ended_ = false;         // guarded by mutex_
};

}  // namespace

void dispatchMainAsync(std::function<void()> work) {
  MainReceiver::shared().post(std::move(work));
}

}  // namespace platform
