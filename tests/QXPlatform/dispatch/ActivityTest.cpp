#include "QXPlatform/dispatch/Activity.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "QXPlatform/dispatch/DispatchGroup.h"
#include "tests/support/Deadline.h"
#include "tests/support/ManualClock.h"

namespace QXPlatform {
namespace {

using namespace std::chrono_literals;
using support::eventually;
using support::soon;

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
