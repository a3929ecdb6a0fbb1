#include "QXPlatform/log/Log.h"

#include "QXPlatform/dispatch/DispatchGroup.h"
#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/foundation/Date.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/log/LogOutput.h"
#include "QXPlatform/log/LogSubject.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

// Of a line that begins with 2024-05-01T09:03:07.250Z.
double secondsOfDay(const std::string& line) {
  return std::stod(line.substr(11, 2)) * 3600 + std::stod(line.substr(14, 2)) * 60 +
         std::stod(line.substr(17, 6));
}

TEST(LogTest, WithoutASinkEachRecordIsOneLineOnStandardError) {
  const std::vector<std::pair<std::string, std::string>> table{
      {"plain", "plain"},
      {"", ""},
      {"two\nlines\r\n", "two\\nlines\\r\\n"},
      {"tab\t escape\x1B[31m bell\x07 delete\x7F", "tab\\t escape\\x1b[31m bell\\x07 delete\\x7f"},
      {std::string("nul\0inside", 10), "nul\\x00inside"},
      {"umlaut \xC3\xA4, C1 \xC2\x9B"
       "2J, no-break space \xC2\xA0, cut \xC2",
       "umlaut \xC3\xA4, C1 \\x9b2J, no-break space \xC2\xA0, cut \xEF\xBF\xBD"},
      {"stray \xFF, cut \xE2\x82", "stray \xEF\xBF\xBD, cut \xEF\xBF\xBD"},
      {std::string(100'000, 'x'), std::string(100'000, 'x')},
  };
  for (const auto& [message, shown] : table) {
    testing::internal::CaptureStderr();
    os_log({"ServiceExtension", "Network", LogType::error, message});
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_EQ(line.substr(24), " [error] ServiceExtension Network: " + shown + "\n");
    EXPECT_NEAR(secondsOfDay(line), std::fmod(Date::now().secondsSince1970, 86400), 60) << line;
  }
}

// Through work items and groups, however many threads there are.
TEST(LogTest, ALineInJSONSaysWhichThreadWroteItAndForWhichPush) {
  const DispatchQueue queue("log", DispatchQueue::Attribute::concurrent);
  const DispatchGroup group;
  const auto line = [] {
    const std::string text = logLine({"s", "c", LogType::error, "m\n\xFF"}, LogFormat::json);
    return parseJSON(text)->dictionary().value();
  };
  std::promise<Dictionary> logged;
  {
    const ScopedLogSubject subject(std::make_shared<const std::string>("push-1"));
    queue.async(group, [&] { queue.async([&] { logged.set_value(line()); }); });
  }
  const Dictionary inside = logged.get_future().get();
  EXPECT_EQ(inside.find("push")->string(), "push-1");
  EXPECT_EQ(inside.find("message")->string(), "m\n\xEF\xBF\xBD");
  EXPECT_EQ(inside.find("time")->string()->size(), 24U);
  const Dictionary outside = line();
  EXPECT_EQ(outside.find("push"), nullptr);
  EXPECT_NE(outside.find("thread")->integer(), inside.find("thread")->integer());
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

}  // namespace
}  // namespace QXPlatform
