#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/dispatch/DispatchGroup.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

using namespace std::chrono_literals;
using support::eventually;
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
  support::InstalledManualClock clock;
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
