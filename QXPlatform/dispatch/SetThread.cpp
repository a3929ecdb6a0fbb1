#include "QXPlatform/dispatch/SetThread.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "QXPlatform/dispatch/WorkRunner.h"

namespace QXPlatform {

void SetThread::begin(ThreadHandle thread) {
  const std::lock_guard lock(mutex_);
  thread_ = thread;
  name_.reset();
}

void SetThread::takeUp(const WorkItem& item) {
  const std::lock_guard lock(mutex_);
  takeUpLocked(item);
}

WorkItems SetThread::takeNext() {
  const std::lock_guard lock(mutex_);
  isBusy_ = false;
  WorkItems next;
  if (kept_.empty()) return next;
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

bool SetThread::setInForeignCode(bool isInForeignCode) {
  const std::lock_guard lock(mutex_);
  isInForeignCode_ = isInForeignCode;
  return isWatched_;
}

bool SetThread::isInForeignCode() const {
  const std::lock_guard lock(mutex_);
  return isInForeignCode_;
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
