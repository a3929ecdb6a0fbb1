#include "QXPlatform/dispatch/DispatchQueue.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include "QXPlatform/dispatch/ThreadSet.h"
#include "QXPlatform/dispatch/WorkItem.h"
#include "QXPlatform/dispatch/WorkRunner.h"
#include "QXPlatform/log/StandardError.h"

namespace QXPlatform {

struct SyncTurn {
  std::condition_variable changed;
  bool come = false;
};

namespace {

// An exception that leaves the work ends the process, here as on the platform; but work that finds no memory
// is given up, since whoever waits for it has a deadline.
void runWork(const DispatchQueue::Work& work) noexcept {
  try {
    work();
  } catch (const std::bad_alloc&) {
    writeToStandardError("out of memory: a work item is given up\n");
  }
}

// The work and all it holds are gone before the group and the count of activities hear of its end.
void runToEnd(WorkItems one) {
  WorkItem& item = one.front();
  const CurrentActivityScope scope(item.activity);
  const ScopedLogSubject subject(std::move(item.subject));
  runWork(item.work);
  item.work = nullptr;
  if (item.group) runWork([&] { item.group->leave(); });
}

// In the list from the outset: an item is large to move.
WorkItems makeItem(DispatchQueue::Work work) {
  WorkItems one;
  one.emplace_back().work = std::move(work);
  return one;
}

void runInPlace(const DispatchQueue::Work& work, std::optional<Activity>& activity) {
  if (!activity) return runWork(work);
  const CurrentActivityScope scope(*activity);
  runWork(work);
}

}  // namespace

// A rule over the set of threads: items start in order, and an exclusive one starts when none runs and keeps
// the later ones waiting. On a serial queue every item is exclusive, on a concurrent one barriers are.
class DispatchQueue::State final : public WorkRunner, public std::enable_shared_from_this<State> {
 public:
  State(std::string label, Attribute attribute)
      : label_(std::move(label)), serial_(attribute == Attribute::serial) {}

  const std::string& label() const override { return label_; }

  // Either throws for want of memory, and nothing has happened, or the item will be run.
  void submit(WorkItems one) {
    WorkItem& item = one.front();
    item.exclusive = item.exclusive || serial_;
    if (item.group) item.group->enter();
    const std::lock_guard lock(mutex_);
    pending_.splice(pending_.end(), one);
    startPending();
  }

  // On the caller's thread: no hand-off, and none of the 64 threads is needed for it.
  void runInTurn(const Work& work) {
    // Inside another item it is that one's activity that counts, since that one waits for this. Made before
    // the turn has come, which a want of memory would leave taken.
    std::optional<Activity> activity;
    if (!CurrentActivityScope::exists()) activity.emplace();
    waitForTurn();
    runInPlace(work, activity);
    const std::lock_guard lock(mutex_);
    noteEnd();
    startPending();
  }

  void run(WorkItems item) override {
    for (; !item.empty(); item = nextForThisThread()) runToEnd(std::move(item));
  }

 private:
  bool mayStart(bool exclusive) const { return !exclusiveRuns_ && (running_ == 0 || !exclusive); }
  bool frontMayStart() const { return !pending_.empty() && mayStart(pending_.front().exclusive); }

  void noteStart(bool exclusive) {
    ++running_;
    exclusiveRuns_ = exclusive;
  }
  void noteEnd() {
    --running_;
    exclusiveRuns_ = false;
  }

  WorkItems takeFront() {
    WorkItems one;
    one.splice(one.end(), pending_, pending_.begin());
    noteStart(one.front().exclusive);
    return one;
  }

  // Under the lock, so that what is started later comes later.
  void startPending() {
    while (frontMayStart()) {
      WorkItems one = takeFront();
      if (SyncTurn* const turn = one.front().turn) {
        turn->come = true;
        turn->changed.notify_one();
      } else {
        one.front().runner = shared_from_this();
        ThreadSet::shared().start(std::move(one));
      }
    }
  }

  // An exclusive item follows on the thread that is there already; others may start several at a time.
  WorkItems nextForThisThread() {
    const std::lock_guard lock(mutex_);
    noteEnd();
    if (frontMayStart() && pending_.front().exclusive && pending_.front().turn == nullptr) return takeFront();
    startPending();
    return {};
  }

  void waitForTurn() {
    std::unique_lock lock(mutex_);
    if (pending_.empty() && mayStart(serial_)) {
      noteStart(serial_);
      return;
    }
    SyncTurn turn;
    pending_.push_back({.work = nullptr, .turn = &turn, .exclusive = serial_});
    ThreadSet::shared().aboutToWait();
    turn.changed.wait(lock, [&] { return turn.come; });
  }

  const std::string label_;
  const bool serial_;
  std::mutex mutex_;
  // Below, guarded by mutex_.
  WorkItems pending_;
  std::size_t running_ = 0;
  bool exclusiveRuns_ = false;
};

DispatchQueue::DispatchQueue(std::string label, Attribute attribute)
    : state_(std::make_shared<State>(std::move(label), attribute)) {}

bool DispatchQueue::canRun() {
  return ThreadSet::shared().canRun();
}

const std::string& DispatchQueue::label() const {
  return state_->label();
}

void DispatchQueue::showLabel() {
  ThreadSet::shared().showLabel();
}

void DispatchQueue::async(Work work) const {
  state_->submit(makeItem(std::move(work)));
}

void DispatchQueue::async(const DispatchGroup& group, Work work) const {
  WorkItems item = makeItem(std::move(work));
  item.front().group = group;
  state_->submit(std::move(item));
}

void DispatchQueue::sync(const Work& work) const {
  // Held here, since the work may drop the handle it was called through.
  const std::shared_ptr<State> state = state_;
  state->runInTurn(work);
}

void DispatchQueue::asyncBarrier(Work work) const {
  WorkItems item = makeItem(std::move(work));
  item.front().exclusive = true;
  state_->submit(std::move(item));
}

}  // namespace QXPlatform
