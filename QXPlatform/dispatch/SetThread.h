#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>

#include "QXPlatform/dispatch/ThreadName.h"
#include "QXPlatform/dispatch/WorkItem.h"

namespace QXPlatform {

// What one thread of the set is at, and the items that it has started and comes back for. With a lock of its
// own, so that threads that are busy with what they have started themselves never meet. Any thread.
class SetThread {
 public:
  // A thread begins that has no name yet.
  void begin(ThreadHandle thread);

  // Whether the thread has worked for so long that another is to take its place, and so long again. For the
  // thread itself.
  bool isOld() const;
  void stayOn();

  // What follows is done for `item`.
  void takeUp(const WorkItem& item);
  // The same for the next item that the thread has kept; without one, or when it is old, it is free.
  WorkItems takeNext();

  // Takes the one item over, to be run when the thread comes back, while it is watched; else returns false.
  bool keep(WorkItems& item);
  void watch();
  // From now on nothing is kept; what was goes to the end of `others`.
  void unwatch(WorkItems& others);
  // For who watches, once a look: whether one that was kept at the last look is still there.
  bool holdsUpSince();
  std::size_t keptSoFar() const;

  // Returns whether the thread is watched.
  bool enterForeignCode();
  void leaveForeignCode() { isInForeignCode_ = false; }
  bool isInForeignCode() const { return isInForeignCode_; }

  // Names the calling thread, which is this one, by the queue whose item it is at.
  void showLabel();
  // For who watches: the same for one that has been at its item since the last look. Returns whether the
  // thread is to be named at the next.
  bool nameIfSeenBefore();

 private:
  void takeUpLocked(const WorkItem& item);
  bool lacksName() const { return isBusy_ && name_ != label_; }

  std::chrono::steady_clock::time_point retirement_;
  std::atomic<bool> isInForeignCode_ = false;

  mutable std::mutex mutex_;
  // Below, guarded by mutex_.
  ThreadHandle thread_{};
  bool isBusy_ = false;
  std::string label_;                // that it is to bear
  std::optional<std::string> name_;  // that it has been given
  bool wasSeen_ = false;             // at the item that it has
  bool isWatched_ = false;
  WorkItems kept_;
  std::size_t taken_ = 0;  // of those that were kept
  std::size_t keptSoFar_ = 0;
  std::size_t keptAtLook_ = 0;  // of keptSoFar_, at the last look
};

}  // namespace QXPlatform
