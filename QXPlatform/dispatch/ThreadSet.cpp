#include "QXPlatform/dispatch/ThreadSet.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <new>
#include <thread>
#include <utility>

#include "QXPlatform/dispatch/WorkRunner.h"

namespace QXPlatform {
namespace {

constexpr std::chrono::seconds kIdleLifetime{2};
constexpr std::chrono::milliseconds kBetweenLooks{1};

}  // namespace

thread_local ThreadSet::Worker* ThreadSet::current = nullptr;

ThreadSet& ThreadSet::shared() {
  static NeverDestroyed<ThreadSet> threads;
  return *threads;
}

void ThreadSet::start(WorkItems item) {
  if (current != nullptr && current->thread.keep(item)) return;
  std::unique_lock lock(mutex_);
  // Watched since: what the thread starts next would overtake this one.
  if (current != nullptr && current->thread.keep(item)) return;
  item.front().isForeign = current == nullptr;
  if (current == nullptr) ++foreign_;
  waiting_.splice(waiting_.end(), item);
  const Call call = attend();
  lock.unlock();
  perform(call);
}

bool ThreadSet::canRun() {
  if (current != nullptr) return true;
  std::unique_lock lock(mutex_);
  if (alive_ > 0 || waiting_.empty()) return true;
  const Call call = callOne();
  lock.unlock();
  return call.worker != nullptr && perform(call);
}

bool ThreadSet::aboutToWait() {
  if (current == nullptr) return true;
  std::unique_lock lock(mutex_);
  current->thread.unwatch(waiting_);
  const Call call = waiting_.empty() || onTheirWay_ > 0 ? Call() : callOne();
  const bool isAlone = alive_ - (call.isNew && call.worker != nullptr ? 1 : 0) == 1;
  lock.unlock();
  return perform(call) || !isAlone;
}

void ThreadSet::enterForeignCode() {
  if (current == nullptr || current->thread.enterForeignCode()) return;
  std::unique_lock lock(mutex_);
  const Call call = attend();
  lock.unlock();
  perform(call);
}

void ThreadSet::leaveForeignCode() {
  if (current != nullptr) current->thread.leaveForeignCode();
}

void ThreadSet::showLabel() {
  if (current != nullptr) current->thread.showLabel();
}

// Calls a thread for what waits, unless it has been seen to.
ThreadSet::Call ThreadSet::attend() {
  const bool isSeenTo = onTheirWay_ > 0 || (lookout_ != nullptr && foreign_ == 0);
  return waiting_.empty() || isSeenTo ? Call() : callOne();
}

ThreadSet::Call ThreadSet::callOne() {
  Call call;
  if (idle_.empty()) {
    call = {hireWorker(), true};
  } else {
    call.worker = idle_.back();
    idle_.pop_back();
    if (call.worker == lookout_) endLookout();
    call.worker->mayWork = true;
  }
  if (call.worker != nullptr) ++onTheirWay_;
  return call;
}

// False when there is no thread to be had.
bool ThreadSet::perform(const Call& call) {
  if (call.isNew) return call.worker != nullptr && launch(*call.worker);
  if (call.worker != nullptr) call.worker->called.send();
  return true;
}

std::size_t ThreadSet::mostThreads() const {
  const auto inForeignCode =
      std::ranges::count_if(workers_, [](const auto& each) { return each->thread.isInForeignCode(); });
  return std::min(kMostThreads + static_cast<std::size_t>(inForeignCode), kMostThreadsEver);
}

// A worker for a new thread, or null when there are threads enough or no memory for one more.
ThreadSet::Worker* ThreadSet::hireWorker() {
  if (alive_ >= kMostThreads && alive_ >= mostThreads()) return nullptr;
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
    --onTheirWay_;
    return false;
  }
}

void ThreadSet::serve(Worker& worker) {
  current = &worker;
  worker.thread.begin(currentThread());
  std::unique_lock lock(mutex_);
  --onTheirWay_;
  do {
    // One at least, since it has been called: else the call would go on through all that are idle and old.
    do {
      if (!waiting_.empty()) runNext(worker, lock);
    } while (!waiting_.empty() && !worker.thread.isOld());
  } while (worker.thread.isOld() ? !isReplaced(worker, lock) : waitForCall(worker, lock));
  worker.alive = false;
  --alive_;
}

// Leaves what the thread keeps to another one. Returns whether there is one for it.
bool ThreadSet::isReplaced(Worker& worker, std::unique_lock<std::mutex>& lock) {
  worker.thread.unwatch(waiting_);
  if (waiting_.empty()) return true;
  const Call call = callOne();
  lock.unlock();
  const bool isCalled = call.worker != nullptr && perform(call);
  lock.lock();
  if (!isCalled) worker.thread.stayOn();
  return isCalled;
}

// Runs one from the list of all, and what the thread keeps in the course of it.
void ThreadSet::runNext(Worker& worker, std::unique_lock<std::mutex>& lock) {
  WorkItems next;
  next.splice(next.end(), waiting_, waiting_.begin());
  ++taken_;
  if (next.front().isForeign) --foreign_;
  const Call call = attend();
  const bool isUnseen = lookout_ == nullptr && onTheirWay_ == 0;
  lock.unlock();
  perform(call);
  worker.thread.takeUp(next.front());
  if (isUnseen) showLabel();
  for (; !next.empty(); next = worker.thread.takeNext()) {
    // May be the last one that holds the queue, so not let go under a lock.
    const std::shared_ptr<WorkRunner> runner = std::move(next.front().runner);
    runner->run(std::move(next));
  }
  lock.lock();
}

bool ThreadSet::isCalledWithin(std::chrono::nanoseconds patience, Worker& worker,
                               std::unique_lock<std::mutex>& lock) {
  lock.unlock();
  const bool isCalled = worker.called.waitFor(patience);
  lock.lock();
  // In the last moment: the call itself is still on its way.
  if (!isCalled && worker.mayWork) worker.called.wait();
  return worker.mayWork;
}

// Returns whether the worker was called before its time as an idle one was over.
bool ThreadSet::waitForCall(Worker& worker, std::unique_lock<std::mutex>& lock) {
  worker.mayWork = false;
  const bool looksOut = lookout_ == nullptr;
  idle_.insert(looksOut ? idle_.begin() : idle_.end(), &worker);
  if (looksOut && lookOut(worker, lock)) return true;
  if (worker.mayWork || isCalledWithin(kIdleLifetime, worker, lock)) {
    --onTheirWay_;
    return true;
  }
  std::erase(idle_, &worker);
  return false;
}

// Ends when nothing has been started since the last look. Returns whether there is work for the worker: an
// item that has waited since then.
bool ThreadSet::lookOut(Worker& worker, std::unique_lock<std::mutex>& lock) {
  lookout_ = &worker;
  for (bool isOver = false; !isOver;) {
    watchThreads();
    const std::size_t startedBefore = startedSoFar();
    const std::size_t toBeTaken = taken_ + waiting_.size();
    if (isCalledWithin(kBetweenLooks, worker, lock)) return false;
    const bool isWaitedFor = someHoldUp() || taken_ < toBeTaken;
    isOver = isWaitedFor || (!nameThreads() && startedSoFar() == startedBefore);
  }
  endLookout();
  if (waiting_.empty()) return false;
  std::erase(idle_, &worker);
  return true;
}

// Not before the list of all is empty: what a thread has started earlier waits there.
void ThreadSet::watchThreads() {
  if (!waiting_.empty()) return;
  for (const auto& worker : workers_) worker->thread.watch();
}

bool ThreadSet::someHoldUp() {
  bool doesOne = false;
  for (const auto& worker : workers_) doesOne = worker->thread.holdsUpSince() || doesOne;
  return doesOne;
}

std::size_t ThreadSet::startedSoFar() const {
  std::size_t started = taken_ + waiting_.size();
  for (const auto& worker : workers_) started += worker->thread.keptSoFar();
  return started;
}

// Names those that have had their item since the last look. Returns whether some are left for the next one.
bool ThreadSet::nameThreads() {
  bool areLeft = false;
  for (const auto& worker : workers_) areLeft = worker->thread.nameIfSeenBefore() || areLeft;
  return areLeft;
}

void ThreadSet::endLookout() {
  lookout_ = nullptr;
  for (const auto& worker : workers_) worker->thread.unwatch(waiting_);
}

}  // namespace QXPlatform
