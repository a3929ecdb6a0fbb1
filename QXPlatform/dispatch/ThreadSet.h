#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "QXPlatform/dispatch/SetThread.h"
#include "QXPlatform/dispatch/ThreadSignal.h"
#include "QXPlatform/dispatch/WorkItem.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXPlatform {

// The threads that all queues of the process share: made when an item finds none free, up to 64 beside those
// that are inside foreign code. One that has been idle for some seconds ends, and one that has been there for
// half a second leaves its place to another when it has had its turn. What one thread starts is taken in that
// order. Any thread.
//
// To wake a thread costs more than most items do, and so does a lock that busy threads meet at. So an item
// that a thread of the set starts wakes nobody: that thread keeps it, and comes back for it when its own item
// ends. One idle thread, the lookout, sees to it that this does not take long: while items are being started
// it looks every millisecond, and when one that was waiting at its last look still does, it puts what busy
// threads keep into the list of all, and takes the first. Without a lookout, and for what other threads
// start, items go to that list, and one thread is called at a time: whoever takes an item from there and
// leaves others calls the next. So however many items block, the rest is started.
class ThreadSet {
 public:
  static constexpr std::size_t kMostThreads = 64;
  // However many of them foreign code may hold.
  static constexpr std::size_t kMostThreadsEver = 1024;

  static ThreadSet& shared();

  // Takes the one item over and returns at once; never fails. Beyond 64 busy threads an item waits for the
  // first that is free, and for want of memory for another thread as well.
  void start(WorkItems item);

  // Whether what waits will be run: not while the system gives this process not even one thread.
  bool canRun();

  // The calling thread, if it is one of the set, will not come back soon for what it has started. Returns
  // whether others will: not when it is the only thread, and the system gives this process no other.
  bool aboutToWait();

  // The calling thread, if it is one of the set, enters code that may never return, and is replaced
  // meanwhile.
  void enterForeignCode();
  static void leaveForeignCode();

  // A thread bears the label of the queue whose item it runs: at once after this call on that thread, else
  // from the lookout's next but one look on. Most items are over by then, and are spared the system call.
  static void showLabel();

 private:
  friend class NeverDestroyed<ThreadSet>;
  struct Worker {
    ThreadSignal called;
    bool mayWork = false;
    bool alive = false;
    SetThread thread;  // has a lock of its own
  };
  // A worker to be woken or, when it is new, given its thread, once the lock has been let go.
  struct Call {
    Worker* worker = nullptr;
    bool isNew = false;
  };

  static thread_local Worker* current;  // of the calling thread, if it is of the set

  ThreadSet() = default;
  Call attend();
  Call callOne();
  bool perform(const Call& call);
  std::size_t mostThreads() const;
  Worker* hireWorker();
  Worker* placeForWorker();
  bool launch(Worker& worker);

  void serve(Worker& worker);
  bool isReplaced(Worker& worker, std::unique_lock<std::mutex>& lock);
  void runNext(Worker& worker, std::unique_lock<std::mutex>& lock);
  static bool isCalledWithin(std::chrono::nanoseconds patience, Worker& worker,
                             std::unique_lock<std::mutex>& lock);
  bool waitForCall(Worker& worker, std::unique_lock<std::mutex>& lock);
  bool lookOut(Worker& worker, std::unique_lock<std::mutex>& lock);
  void watchThreads();
  bool someHoldUp();
  bool nameThreads();
  std::size_t startedSoFar() const;
  void endLookout();

  std::mutex mutex_;
  // Below, guarded by mutex_. While items wait, a thread is on its way, or the lookout is there, or all are
  // busy, or none is to be had. Threads are watched only while the lookout is there.
  WorkItems waiting_;
  std::size_t foreign_ = 0;  // of those that wait
  std::size_t taken_ = 0;    // from there, so far
  std::vector<std::unique_ptr<Worker>> workers_;
  std::size_t alive_ = 0;
  std::size_t onTheirWay_ = 0;  // called, and not come yet
  // The last one to fall idle is called first, so that the others may end, and the lookout last. Has room for
  // all workers.
  std::vector<Worker*> idle_;
  Worker* lookout_ = nullptr;  // one of the idle, while it looks
};

}  // namespace QXPlatform
