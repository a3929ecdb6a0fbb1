#include "QXPlatform/dispatch/ThreadSet.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <new>
#include <thread>
#include <utility>

namespace QXPlatform {
namespace {

constexpr std::chrono::seconds kIdleLifetime{2};

}  // namespace

ThreadSet& ThreadSet::shared() {
  static NeverDestroyed<ThreadSet> threads;
  return *threads;
}

void ThreadSet::start(WorkItems items) {
  std::unique_lock lock(mutex_);
  waiting_.splice(waiting_.end(), items);
  if (!idle_.empty()) {
    Worker& worker = *idle_.back();
    idle_.pop_back();
    worker.mayWork = true;
    lock.unlock();
    worker.called.notify_one();
  } else if (Worker* worker = hireWorker()) {
    lock.unlock();
    launch(*worker);
  }
}

bool ThreadSet::canRun() {
  std::unique_lock lock(mutex_);
  if (alive_ > 0 || waiting_.empty()) return true;
  Worker* const worker = hireWorker();
  lock.unlock();
  return worker != nullptr && launch(*worker);
}

void ThreadSet::enterForeignCode() {
  std::unique_lock lock(mutex_);
  ++inForeignCode_;
  if (waiting_.empty() || !idle_.empty()) return;
  if (Worker* worker = hireWorker()) {
    lock.unlock();
    launch(*worker);
  }
}

void ThreadSet::leaveForeignCode() {
  const std::lock_guard lock(mutex_);
  --inForeignCode_;
}

// A worker for a new thread, or null when there are threads enough or no memory for one more.
ThreadSet::Worker* ThreadSet::hireWorker() {
  if (alive_ >= std::min(kMostThreads + inForeignCode_, kMostThreadsEver)) return nullptr;
  Worker* const worker = placeForWorker();
  if (worker == nullptr) return nullptr;
  worker->alive = true;
  ++alive_;
  return worker;
}

ThreadSet::Worker* ThreadSet::placeForWorker() {
  const auto place = std::ranges::find_if(workers_, [](const auto& each) { return !each->alive; });
  if (place != workers_.end()) return place->get();
  try {
    idle_.reserve(workers_.size() + 1);
    return workers_.emplace_back(std::make_unique<Worker>()).get();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool ThreadSet::launch(Worker& worker) {
  try {
    std::thread([this, &worker] { serve(worker); }).detach();
    return true;
  } catch (const std::exception&) {
    // The item stays for the threads there are, or come to be.
    const std::lock_guard lock(mutex_);
    worker.alive = false;
    --alive_;
    return false;
  }
}

void ThreadSet::serve(Worker& worker) {
  std::unique_lock lock(mutex_);
  do {
    while (!waiting_.empty()) runNext(lock);
  } while (waitForCall(worker, lock));
  worker.alive = false;
  --alive_;
}

void ThreadSet::runNext(std::unique_lock<std::mutex>& lock) {
  WorkItem item = std::move(waiting_.front());
  waiting_.pop_front();
  lock.unlock();
  std::shared_ptr<WorkRunner> runner = std::move(item.runner);
  runner->run(std::move(item));
  runner.reset();  // may be the last one that holds the queue, so not under the lock
  lock.lock();
}

// Returns whether the worker was called before its time as an idle one was over.
bool ThreadSet::waitForCall(Worker& worker, std::unique_lock<std::mutex>& lock) {
  worker.mayWork = false;
  idle_.push_back(&worker);
  // In real time: an idle thread is no business of a clock that a test installs and takes away again.
  if (worker.called.wait_for(lock, kIdleLifetime, [&] { return worker.mayWork; })) return true;
  std::erase(idle_, &worker);
  return false;
}

}  // namespace QXPlatform
