// What Linux alone shows: names and numbers of threads, files that do not tell their size.

#include <pthread.h>
#include <unistd.h>

#include "QXPlatform/dispatch/DispatchGroup.h"
#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/files/FileContents.h"
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
        EXPECT_TRUE(eventually([&] { return threadName() == expected; })) << threadName();
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
    std::promise<void> gate;
    const auto opened = gate.get_future().share();
    for (int i = 0; i < 20; ++i) queue.async(group, [&] { opened.wait(); });
    EXPECT_TRUE(eventually([] { return threadsOfProcess() >= 20; }));
    gate.set_value();
    ASSERT_TRUE(group.wait(soon()));
    EXPECT_TRUE(eventually([&] { return threadsOfProcess() <= before; }));
  }
}

// The memory that the allocator keeps for a thread goes with it, also from one that is never idle.
TEST(DispatchQueueTest, ABusyThreadIsReplacedInTime) {
  const DispatchQueue queue("concurrent", Attribute::concurrent);
  const DispatchGroup group;
  std::set<pid_t> threads;
  const std::function<void()> goOn = [&] {
    threads.insert(gettid());
    if (threads.size() < 4) queue.async(group, goOn);
  };
  queue.async(group, goOn);
  EXPECT_TRUE(group.wait(Clock::TimePoint::max()));
}

TEST(FileContentsTest, ReadsFilesThatDoNotTellTheirSize) {
  EXPECT_GT(readContents(URL::file("/proc/self/status"))->size(), 100U);
}

}  // namespace
}  // namespace QXPlatform
