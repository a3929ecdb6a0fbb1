#include "QXPlatform/log/Log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "QXPlatform/linux/JournalStream.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

TEST(LogTest, WithoutASinkEachRecordIsOneLineOnStandardError) {
  const std::vector<std::pair<std::string, std::string>> table{
      {"plain", "plain"},
      {"", ""},
      {"two\nlines\r\n", "two\\nlines\\r\\n"},
      {"tab\t escape\x1B[31m bell\x07 delete\x7F", "tab\\t escape\\x1b[31m bell\\x07 delete\\x7f"},
      {std::string("nul\0inside", 10), "nul\\x00inside"},
      {"umlaut \xC3\xA4, C1 \xC2\x9B"
       "2J, no-break space \xC2\xA0, cut \xC2",
       "umlaut \xC3\xA4, C1 \\x9b2J, no-break space \xC2\xA0, cut \xC2"},
      {std::string(100'000, 'x'), std::string(100'000, 'x')},
  };
  for (const auto& [message, shown] : table) {
    testing::internal::CaptureStderr();
    os_log({"ServiceExtension", "Network", LogType::error, message});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[error] ServiceExtension Network: " + shown + "\n");
  }
}

TEST(LogTest, TheInnermostSinkGetsTheRecords) {
  const support::ScopedLogRecorder outer;
  {
    const support::ScopedLogRecorder inner;
    os_log({"s", "c", LogType::fault, "inside\n"});
    EXPECT_EQ(inner->entries(), (std::vector<support::LogEntry>{{"s", "c", LogType::fault, "inside\n"}}));
  }
  os_log({"s", "c", LogType::default_, "after"});
  EXPECT_EQ(outer->messages(), std::vector<std::string>{"after"});
}

// A sink that shows a call which begins before it is installed or goes on after it is taken away.
class WatchfulSink final : public LogSink {
 public:
  explicit WatchfulSink(std::atomic<int>& calls) : calls_(calls) {}
  void write(const LogRecord& record) override {
    if (record.message == "nested") return;
    std::this_thread::yield();
    os_log({record.subsystem, record.category, record.type, "nested"});
    ++*inside_;
    ++calls_;
  }

 private:
  std::atomic<int>& calls_;
  std::unique_ptr<std::atomic<int>> inside_ = std::make_unique<std::atomic<int>>(0);
};

TEST(LogTest, AScopeThatEndsWaitsForCallsInProgress) {
  std::atomic<int> calls = 0;
  WatchfulSink outermost(calls);
  const ScopedLogSink outermostScope(outermost);
  std::atomic<bool> stop = false;
  std::atomic<int> logged = 0;
  std::array<std::thread, 3> threads;
  for (std::thread& thread : threads) {
    thread = std::thread([&] {
      while (!stop) {
        os_log({"s", "c", LogType::debug, "m"});
        ++logged;
      }
    });
  }
  for (int round = 0; round < 300; ++round) {
    WatchfulSink outer(calls);
    const ScopedLogSink outerScope(outer);
    WatchfulSink inner(calls);
    const ScopedLogSink innerScope(inner);
    std::this_thread::yield();
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(calls, logged);
}

TEST(LogTest, RecognisesTheJournalByDeviceAndInode) {
  const int file = open("/dev/null", O_RDWR | O_CLOEXEC);
  ASSERT_GE(file, 0);
  struct stat status {};
  ASSERT_EQ(fstat(file, &status), 0);
  const std::string device = std::to_string(status.st_dev);
  const std::string inode = std::to_string(status.st_ino);
  EXPECT_TRUE(isJournalStream(device + ":" + inode, file));
  const std::vector<std::string> others{
      "", ":", device, device + ":", device + ":" + inode + "0", inode + ":" + device + ":", "x:y"};
  for (const std::string& other : others) EXPECT_FALSE(isJournalStream(other, file)) << other;
  close(file);
  EXPECT_FALSE(isJournalStream(device + ":" + inode, file));
}

}  // namespace
}  // namespace QXPlatform
