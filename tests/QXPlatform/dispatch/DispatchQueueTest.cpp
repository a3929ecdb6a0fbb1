#include "QXPlatform/dispatch/DispatchQueue.h"

#include <sys/resource.h>
#include <unistd.h>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/dispatch/DispatchGroup.h"
#include "QXTestSupport/ManualClock.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

using namespace std::chrono_literals;
using support::eventually;
using support::soon;
using Attribute = DispatchQueue::Attribute;

// Holds items back until it is opened.
class Gate {
 public:
  void open() { opened_.set_value(); }
  void wait() const { future_.wait(); }

 private:
  std::promise<void> opened_;
  std::shared_future<void> future_ = opened_.get_future().share();
};

TEST(DispatchQueueTest, SerialRunsInOrderOneAtATime) {
  constexpr int kItems = 500;
  const DispatchQueue queue("serial", Attribute::serial);
  // Without a lock on purpose: the queue is the lock.
  std::array<std::vector<int>, 4> seen;
  int total = 0;
  std::vector<std::thread> threads;
  for (std::vector<int>& mine : seen) {
    threads.emplace_back([&] {
      for (int i = 0; i < kItems; ++i) {
        const auto work = [&, i] {
          mine.push_back(i);
          ++total;
        };
        i % 10 == 9 ? queue.sync(work) : queue.async(work);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  queue.sync([&] { EXPECT_EQ(total, 4 * kItems); });
  for (const std::vector<int>& each : seen) {
    ASSERT_EQ(each.size(), std::size_t{kItems});
    EXPECT_TRUE(std::ranges::is_sorted(each));
  }
}

TEST(DispatchQueueTest, BlockedItemsKeepNoneFromStartingUpTo64Threads) {
  const DispatchQueue concurrent("concurrent", Attribute::concurrent);
  const DispatchQueue serial("serial", Attribute::serial);
  const DispatchGroup blocked;
  const DispatchGroup others;
  Gate gate;
  std::atomic<int> started = 0;
  const auto block = [&] {
    ++started;
    gate.wait();
  };
  for (int i = 0; i < 62; ++i) concurrent.async(blocked, block);
  for (int i = 0; i < 60; ++i) concurrent.async(others, [] {});
  serial.async(others, [] {});
  EXPECT_TRUE(others.wait(soon()));
  EXPECT_TRUE(eventually([&] { return started == 62; }));

  for (int i = 62; i < 200; ++i) concurrent.async(blocked, block);
  EXPECT_TRUE(eventually([&] { return started == 64; }));
  // The work of sync() needs no thread of the set.
  concurrent.sync([&] { EXPECT_EQ(started, 64); });
  gate.open();
  EXPECT_TRUE(blocked.wait(soon()));
  EXPECT_EQ(started, 200);
}

TEST(DispatchQueueTest, AnItemMayBlockForWhatItHasSubmitted) {
  const DispatchQueue queue("concurrent", Attribute::concurrent);
  const DispatchGroup group;
  for (int round = 0; round < 20; ++round) {
    queue.async(group, [&] {
      const auto gates = std::make_shared<std::array<Gate, 3>>();
      for (Gate& gate : *gates) queue.async([gates, &gate] { gate.open(); });
      for (const Gate& gate : *gates) gate.wait();
    });
    ASSERT_TRUE(group.wait(soon()));
  }
}

TEST(DispatchQueueTest, ABarrierRunsAloneBetweenEarlierAndLaterItems) {
  const DispatchQueue queue("concurrent", Attribute::concurrent);
  const DispatchGroup group;
  std::atomic<int> running = 0;
  std::atomic<int> finished = 0;
  std::atomic<int> faults = 0;
  const auto item = [&](int least) {
    ++running;
    if (finished < least) ++faults;
    std::this_thread::yield();
    ++finished;
    --running;
  };
  for (int round = 0; round < 40; ++round) {
    const int before = round * 12;
    for (int i = 0; i < 10; ++i) queue.async(group, [&, before] { item(before - 1); });
    group.enter();
    queue.asyncBarrier([&, before] {
      if (running != 0 || finished != before + 10) ++faults;
      ++finished;
      group.leave();
    });
    queue.async(group, [&, before] { item(before + 11); });
  }
  EXPECT_TRUE(group.wait(soon()));
  queue.sync([&] { EXPECT_EQ(finished, 480); });
  EXPECT_EQ(faults, 0);
}

TEST(DispatchQueueTest, SyncWaitsForABarrierAndABarrierForSync) {
  const DispatchQueue queue("concurrent", Attribute::concurrent);
  Gate gate;
  std::atomic<int> step = 0;
  queue.asyncBarrier([&] {
    gate.wait();
    step = 1;
  });
  std::thread caller([&] {
    queue.sync([&] {
      EXPECT_EQ(step, 1);
      queue.asyncBarrier([&] { step = 3; });
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      step = 2;
    });
  });
  gate.open();
  caller.join();
  EXPECT_TRUE(eventually([&] { return step == 3; }));
}

TEST(DispatchQueueTest, NothingIsDroppedWhenTheHandlesGo) {
  std::atomic<int> ran = 0;
  Gate gate;
  {
    const DispatchQueue serial("serial", Attribute::serial);
    const DispatchQueue concurrent("concurrent", Attribute::concurrent);
    serial.async([&] { gate.wait(); });
    concurrent.asyncBarrier([&] { gate.wait(); });
    for (int i = 0; i < 100; ++i) {
      serial.async([&] { ++ran; });
      concurrent.async([&] { ++ran; });
    }
  }
  EXPECT_EQ(ran, 0);
  gate.open();
  EXPECT_TRUE(eventually([&] { return ran == 200; }));
}

TEST(DispatchQueueTest, WorkMayDropTheLastHandleItRunsThrough) {
  auto queue = std::make_unique<DispatchQueue>("serial", Attribute::serial);
  bool ran = false;
  const DispatchQueue& handle = *queue;
  handle.sync([&] {
    queue.reset();
    ran = true;
  });
  EXPECT_TRUE(ran);
}

TEST(DispatchQueueTest, WorkIsDestroyedBeforeItsGroupHearsOfTheEnd) {
  for (const Attribute attribute : {Attribute::serial, Attribute::concurrent}) {
    const DispatchQueue queue("queue", attribute);
    for (int i = 0; i < 200; ++i) {
      auto held = std::make_shared<int>(i);
      const std::weak_ptr<int> watched = held;
      const DispatchGroup group;
      queue.async(group, [held = std::move(held)] {});
      ASSERT_TRUE(group.wait(soon()));
      ASSERT_TRUE(watched.expired());
    }
  }
}

TEST(DispatchQueueTest, WhatWorkHoldsMaySubmitWhileItIsDestroyed) {
  const DispatchQueue queue("serial", Attribute::serial);
  const DispatchGroup group;
  group.enter();
  queue.async(
      [last = std::shared_ptr<void>(nullptr, [&](void*) { queue.async([&] { group.leave(); }); })] {});
  EXPECT_TRUE(group.wait(soon()));
}

TEST(DispatchQueueDeathTest, AnExceptionThatLeavesAnItemEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const DispatchQueue queue("serial", Attribute::serial);
  EXPECT_DEATH(
      {
        queue.async([] { throw 1; });
        eventually([] { return false; });
      },
      "");
  EXPECT_DEATH(queue.sync([] { throw 1; }), "");
}

[[noreturn]] void exitAfterAWantOfThreads() {
  const DispatchQueue queue("serial", Attribute::serial);
  constexpr uid_t kNobody = 54321;
  rlimit many{};
  getrlimit(RLIMIT_NPROC, &many);
  const rlimit one{1, many.rlim_max};
  std::promise<void> ran;
  const bool isLimited = setuid(kNobody) == 0 && setrlimit(RLIMIT_NPROC, &one) == 0;
  queue.async([&] { ran.set_value(); });
  const bool ranAtOnce = DispatchQueue::canRun();
  setrlimit(RLIMIT_NPROC, &many);
  const bool runs = DispatchQueue::canRun();
  ran.get_future().wait();
  std::_Exit(isLimited && !ranAtOnce && runs ? 0 : 1);
}

TEST(DispatchQueueDeathTest, WithoutAThreadItemsWaitUntilThereIsOne) {
  // Threads are counted by user, and root's are not.
  if (geteuid() != 0) GTEST_SKIP() << "cannot become a user without other processes";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(exitAfterAWantOfThreads(), testing::ExitedWithCode(0), "");
}

TEST(DispatchQueueDeathTest, TheProcessExitsWhateverItsThreadsDo) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const DispatchQueue serial("serial", Attribute::serial);
        const DispatchQueue concurrent("concurrent", Attribute::concurrent);
        for (int i = 0; i < 100; ++i) {
          serial.async([] { std::this_thread::yield(); });
          concurrent.async([i] { std::this_thread::sleep_for(std::chrono::seconds(i % 2)); });
        }
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
}

TEST(DispatchGroupTest, NotifiesOnceEmptyAndAtOnceWhenEmptyAlready) {
  const DispatchQueue concurrent("concurrent", DispatchQueue::Attribute::concurrent);
  const DispatchQueue serial("serial", DispatchQueue::Attribute::serial);
  for (int round = 0; round < 200; ++round) {
    const DispatchGroup group;
    const DispatchGroup notified;
    std::atomic<int> members = 3;
    std::atomic<int> notifications = 0;
    notified.enter();
    group.notify(serial, [&] { notified.leave(); });
    ASSERT_TRUE(notified.wait(soon()));

    notified.enter();
    notified.enter();
    for (int i = 0; i < 3; ++i) concurrent.async(group, [&] { --members; });
    for (int i = 0; i < 2; ++i) {
      group.notify(serial, [&] {
        EXPECT_EQ(members, 0);
        ++notifications;
        notified.leave();
      });
    }
    ASSERT_TRUE(notified.wait(soon()));
    EXPECT_EQ(notifications, 2);
  }
}

TEST(DispatchGroupTest, WaitGivesUpAtTheDeadlineOfTheInstalledClock) {
  QXTestSupport::ManualClock clock;
  const DispatchGroup group;
  group.enter();
  EXPECT_FALSE(group.wait(clock.now()));

  std::atomic<bool> over = false;
  std::thread waiter([&, deadline = clock.now() + 20s] {
    EXPECT_FALSE(group.wait(deadline));
    over = true;
  });
  clock.advance(19s);
  std::this_thread::sleep_for(20ms);
  EXPECT_FALSE(over);
  clock.advance(1s);
  waiter.join();

  // The last member leaves before the deadline.
  std::thread other([&, deadline = clock.now() + 20s] { EXPECT_TRUE(group.wait(deadline)); });
  group.leave();
  other.join();
  EXPECT_TRUE(group.wait(clock.now() - 1s));
}

TEST(DispatchGroupTest, WaitsForAnyDeadlineThatATimePointCanHold) {
  const DispatchQueue queue("concurrent", DispatchQueue::Attribute::concurrent);
  const DispatchGroup group;
  queue.async(group, [] { std::this_thread::sleep_for(5ms); });
  EXPECT_TRUE(group.wait(Clock::TimePoint::max()));
  group.enter();
  EXPECT_FALSE(group.wait(Clock::current().now() + 10ms));
  EXPECT_FALSE(group.wait(Clock::TimePoint::min()));
  group.leave();
}

TEST(DispatchGroupDeathTest, LeavingMoreOftenThanEnteredStopsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(DispatchGroup().leave(), "left more often than entered");
}

bool nothingInFlight() {
  return Activity::waitUntilNone(Clock::current().now());
}

TEST(ActivityTest, CountsItemsFromSubmissionToEnd) {
  const DispatchQueue queue("serial", DispatchQueue::Attribute::serial);
  ASSERT_TRUE(Activity::waitUntilNone(soon()));
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> ran = 0;
    for (int i = 0; i < 5; ++i) queue.async([&] { ++ran; });
    ASSERT_TRUE(Activity::waitUntilNone(soon()));
    ASSERT_EQ(ran, 5);
  }
}

TEST(ActivityTest, SeesNoGapBetweenTheLastMemberAndTheNotification) {
  const DispatchQueue queue("concurrent", DispatchQueue::Attribute::concurrent);
  for (int round = 0; round < 500; ++round) {
    std::atomic<bool> notified = false;
    const DispatchGroup group;
    std::promise<void> registered;
    queue.async(group, [&, ready = registered.get_future().share()] { ready.wait(); });
    group.notify(queue, [&] { notified = true; });
    registered.set_value();
    ASSERT_TRUE(Activity::waitUntilNone(soon()));
    ASSERT_TRUE(notified);
  }
}

TEST(ActivityTest, GivesUpAtTheDeadlineOfTheInstalledClock) {
  QXTestSupport::ManualClock clock;
  Activity networkTask;
  std::thread waiter([&, deadline = clock.now() + 30s] { EXPECT_FALSE(Activity::waitUntilNone(deadline)); });
  clock.advance(30s);
  waiter.join();
  { const Activity taken(std::move(networkTask)); }
  EXPECT_TRUE(nothingInFlight());
}

TEST(ActivityTest, ForeignCodeDoesNotCount) {
  const DispatchQueue queue("concurrent", DispatchQueue::Attribute::concurrent);
  const DispatchQueue other("serial", DispatchQueue::Attribute::serial);
  const DispatchGroup group;
  std::promise<void> mayReturn;
  std::promise<void> returned;
  std::promise<void> mayEnd;
  queue.async(group, [&] {
    // Work of sync() belongs to the item that waits for it.
    other.sync([&] {
      const ForeignCodeScope scope;
      const ForeignCodeScope nested;
      mayReturn.get_future().wait();
    });
    returned.set_value();
    mayEnd.get_future().wait();
  });
  EXPECT_TRUE(eventually(nothingInFlight));
  mayReturn.set_value();
  returned.get_future().wait();
  EXPECT_FALSE(nothingInFlight());
  mayEnd.set_value();
  EXPECT_TRUE(group.wait(soon()));
  EXPECT_TRUE(Activity::waitUntilNone(soon()));

  const Activity outside;
  const ForeignCodeScope scope;
  EXPECT_FALSE(nothingInFlight());
}

}  // namespace
}  // namespace QXPlatform
