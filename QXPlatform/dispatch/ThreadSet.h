#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "QXPlatform/dispatch/WorkItem.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXPlatform {

// What a thread of the set runs items for. run() is called on such a thread, with no lock held.
class WorkRunner {
 public:
  virtual ~WorkRunner() = default;
  virtual void run(WorkItem item) = 0;
};

// The threads that all queues of the process share: made when an item finds none free, up to 64 beside those
// that are inside foreign code; one that has been idle for some seconds ends. Items are taken in the order in
// which they were started. Any thread.
class ThreadSet {
 public:
  static constexpr std::size_t kMostThreads = 64;
  // However many of them foreign code may hold.
  static constexpr std::size_t kMostThreadsEver = 1024;

  static ThreadSet& shared();

  // Takes the items over and returns at once; never fails. Beyond 64 busy threads an item waits for the first
  // that is free, and for want of memory for another thread as well.
  void start(WorkItems items);

  // Whether what waits will be run: not while the system gives this process not even one thread.
  bool canRun();

  // The calling thread, one of the set, enters code that may never return, and is replaced meanwhile.
  void enterForeignCode();
  void leaveForeignCode();

 private:
  friend class NeverDestroyed<ThreadSet>;
  struct Worker {
    std::condition_variable called;
    bool mayWork = false;
    bool alive = false;
  };

  ThreadSet() = default;
  Worker* hireWorker();
  Worker* placeForWorker();
  bool launch(Worker& worker);
  void serve(Worker& worker);
  void runNext(std::unique_lock<std::mutex>& lock);
  bool waitForCall(Worker& worker, std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;
  // Below, guarded by mutex_. For every waiting item a thread is on its way, unless all are busy or none is
  // to be had.
  WorkItems waiting_;
  std::vector<std::unique_ptr<Worker>> workers_;
  std::size_t alive_ = 0;
  std::size_t inForeignCode_ = 0;
  // The last one to fall idle is called first, so that the others may end. Has room for all workers.
  std::vector<Worker*> idle_;
};

}  // namespace QXPlatform
