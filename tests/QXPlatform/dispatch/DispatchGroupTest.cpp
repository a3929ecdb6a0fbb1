#include "QXPlatform/dispatch/DispatchGroup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/support/Deadline.h"
#include "tests/support/ManualClock.h"

namespace QXPlatform {
namespace {

using namespace std::chrono_literals;
using support::soon;

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
  support::InstalledManualClock clock;
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

}  // namespace
}  // namespace QXPlatform
