#include "QXPlatform/dispatch/SetThread.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "QXPlatform/dispatch/WorkRunner.h"

namespace QXPlatform {
namespace {

// The allocator keeps freed blocks for each thread, ever more of them and ever more scattered, and the pages
// that they are on stay in use. They go with the thread.
constexpr std::chrono::milliseconds kOldAge{500};
// At the time, which costs as much as a small item.
constexpr std::size_t kItemsBetweenLooks = 16;

}  // namespace

void SetThread::begin(ThreadHandle thread) {
  const std::lock_guard lock(mutex_);
  thread_ = thread;
  name_.reset();
  stayOn();
}

// In real time: a thread is no business of a clock that a test installs and takes away again.
void SetThread::stayOn() {
  retirement_ = std::chrono::steady_clock::now() + kOldAge;
}

bool SetThread::isOld() const {
  return std::chrono::steady_clock::now() >= retirement_;
}

void SetThread::takeUp(const WorkItem& item) {
  const std::lock_guard lock(mutex_);
  takeUpLocked(item);
}

WorkItems SetThread::takeNext() {
  const std::lock_guard lock(mutex_);
  isBusy_ = false;
  WorkItems next;
  if (kept_.empty() || (++taken_ % kItemsBetweenLooks == 0 && isOld())) return next;
  next.splice(next.end(), kept_, kept_.begin());
  takeUpLocked(next.front());
  return next;
}

void SetThread::takeUpLocked(const WorkItem& item) {
  const std::string_view queueLabel = item.runner->label();
  label_ = queueLabel.substr(queueLabel.size() - std::min(queueLabel.size(), kLongestThreadName));
  isBusy_ = true;
  wasSeen_ = false;
}

bool SetThread::keep(WorkItems& item) {
  const std::lock_guard lock(mutex_);
  if (!isWatched_) return false;
  kept_.splice(kept_.end(), item);
  ++keptSoFar_;
  return true;
}

void SetThread::watch() {
  const std::lock_guard lock(mutex_);
  isWatched_ = true;
}

void SetThread::unwatch(WorkItems& others) {
  const std::lock_guard lock(mutex_);
  isWatched_ = false;
  others.splice(others.end(), kept_);
}

bool SetThread::holdsUpSince() {
  const std::lock_guard lock(mutex_);
  const std::size_t before = std::exchange(keptAtLook_, keptSoFar_);
  return keptSoFar_ - kept_.size() < before;
}

std::size_t SetThread::keptSoFar() const {
  const std::lock_guard lock(mutex_);
  return keptSoFar_;
}

bool SetThread::enterForeignCode() {
  const std::lock_guard lock(mutex_);
  isInForeignCode_ = true;
  return isWatched_;
}

void SetThread::showLabel() {
  std::string label;
  {
    const std::lock_guard lock(mutex_);
    if (!lacksName()) return;
    name_ = label = label_;
  }
  setCurrentThreadName(label);
}

bool SetThread::nameIfSeenBefore() {
  const std::lock_guard lock(mutex_);
  if (!lacksName()) return false;
  if (!std::exchange(wasSeen_, true)) return true;
  setThreadName(thread_, *(name_ = label_));
  return false;
}

}  // namespace QXPlatform
