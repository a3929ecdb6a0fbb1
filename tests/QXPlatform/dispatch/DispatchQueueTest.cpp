#include "QXPlatform/dispatch/DispatchQueue.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include "QXPlatform/dispatch/DispatchGroup.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

using support::eventually;
using support::soon;
using Attribute = DispatchQueue::Attribute;

std::string threadName() {
  std::array<char, 16> name{};
  pthread_getname_np(pthread_self(), name.data(), name.size());
  return name.data();
}

std::ptrdiff_t threadsOfProcess() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

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

TEST(DispatchQueueTest, TheThreadBearsTheLabelsLastCharacters) {
  const DispatchGroup group;
  const std::vector<std::pair<std::string, std::string>> table{
      {"com.example.service.serialQueue", "ice.serialQueue"},
      {"exactly15chars!", "exactly15chars!"},
      {"short", "short"},
      {"", ""},
  };
  for (const auto& [label, name] : table) {
    for (int i = 0; i < 3; ++i) {
      DispatchQueue(label, Attribute::serial).async(group, [expected = name] {
        EXPECT_EQ(threadName(), expected);
      });
      ASSERT_TRUE(group.wait(soon()));
    }
  }
  const std::string own = threadName();
  DispatchQueue("other", Attribute::serial).sync([&] { EXPECT_EQ(threadName(), own); });
}

TEST(DispatchQueueTest, IdleThreadsRetireAndComeBack) {
  const DispatchQueue queue("concurrent", Attribute::concurrent);
  const DispatchGroup group;
  // A sanitizer starts a thread of its own beside the first one.
  std::thread([] {}).join();
  const std::ptrdiff_t before = threadsOfProcess();
  for (int round = 0; round < 2; ++round) {
    Gate gate;
    for (int i = 0; i < 20; ++i) queue.async(group, [&] { gate.wait(); });
    EXPECT_GE(threadsOfProcess(), 20);
    gate.open();
    ASSERT_TRUE(group.wait(soon()));
    EXPECT_TRUE(eventually([&] { return threadsOfProcess() <= before; }));
  }
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

}  // namespace
}  // namespace QXPlatform
