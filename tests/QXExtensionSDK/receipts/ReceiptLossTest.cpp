// That no receipt is lost: not by a kill, not by pushes that are handled at once.

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <set>
#include <thread>

#include "tests/QXExtensionSDK/receipts/ReceiptTestKit.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Program.h"

namespace QXExtensionSDK {
namespace {

using backend::LoopbackServer;
using backend::Request;
using backend::Response;

using MessageIds = std::multiset<std::string>;

// The messages whose receipts a request carries.
MessageIds messagesIn(const Request& request) {
  MessageIds ids;
  for (const auto& item : itemsOf(request)) {
    ids.emplace(item.find("event")->find("messageId")->string().value_or("?"));
  }
  return ids;
}

MessageIds storedMessages(ExtensionModuleName module) {
  const auto ids = messageIds(ReceiptHost::stored(module));
  return {ids.begin(), ids.end()};
}

// One push in a process of its own, which the test may kill.
class PushProcess {
 public:
  PushProcess(const support::TemporaryDirectory& directory, const std::string& messageId)
      : file_(directory.write(
            messageId, *platform::writeJSON(receiptPush(messageId).setting("aps", platform::Dictionary()),
                                            platform::JSONStyle::compact))),
        process_([this] { ::execl(program_.c_str(), "qx", "push", file_.c_str(), nullptr); }) {}

  support::ChildProcess& process() { return process_; }

 private:
  const std::string program_ = support::programPath("qx");
  const std::string file_;
  support::ChildProcess process_;
};

TEST(ReceiptLossTest, AKillAtAnyInstantLeavesEveryStoredReceiptForTheNextPush) {
  std::atomic<bool> answers = false;
  const LoopbackServer server({.handler = [&](const Request&) -> std::optional<Response> {
    Response response{.body = "{}"};
    if (!answers) response.fault = backend::Fault::neverAnswer;
    return response;
  }});
  const ReceiptHost host(server.url());
  const support::TemporaryDirectory pushes;
  std::mt19937 random(20);
  std::uniform_int_distribution<int> milliseconds(0, 150);

  MessageIds expected[2];
  for (int round = 0; round < 25; ++round) {
    const std::string messageId = "m" + std::to_string(round);
    PushProcess push(pushes, messageId);
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds(random)));
    push.process().kill();
    for (const auto module : {kQXE, kMAM}) {
      MessageIds& before = expected[module == kMAM ? 1 : 0];
      const MessageIds now = storedMessages(module);
      // What was there stays; the push that was killed has stored its receipt, or not come that far.
      if (now != before) before.insert(messageId);
      EXPECT_EQ(now, before) << "round " << round;
    }
  }
  // Whatever was sent had been stored before.
  for (const Request& request : server.requests()) {
    const MessageIds& stored = expected[isForMAM(request) ? 1 : 0];
    for (const std::string& id : messagesIn(request)) EXPECT_EQ(stored.count(id), 1U) << id;
  }
  ASSERT_GT(expected[0].size() + expected[1].size(), 0U);

  answers = true;
  const std::size_t requestsBefore = server.requests().size();
  PushProcess last(pushes, "last");
  ASSERT_TRUE(last.process().succeeds());
  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), requestsBefore + 2);
  for (std::size_t index = requestsBefore; index < requests.size(); ++index) {
    MessageIds all = expected[isForMAM(requests[index]) ? 1 : 0];
    all.insert("last");
    EXPECT_EQ(messagesIn(requests[index]), all);
  }
  EXPECT_TRUE(storedMessages(kQXE).empty());
  EXPECT_TRUE(storedMessages(kMAM).empty());
}

// Pushes handled at once: each receipt is acknowledged or still stored, and none is acknowledged twice.
TEST(ReceiptLossTest, PushesHandledAtOnceKeepEachOthersReceipts) {
  constexpr int kRounds = 5;
  constexpr int kAtOnce = 8;
  std::atomic<unsigned> answered = 0;
  std::mutex mutex;
  MessageIds acknowledged[2];
  const LoopbackServer server({.handler = [&](const Request& request) -> std::optional<Response> {
    if (answered++ % 3 == 0) return Response{.status = 503, .delay = std::chrono::milliseconds(5)};
    const std::lock_guard lock(mutex);
    acknowledged[isForMAM(request) ? 1 : 0].merge(messagesIn(request));
    return Response{.body = "{}"};
  }});
  const ReceiptHost host(server.url());
  const support::ScopedLogRecorder log;
  Extension extension;
  MessageIds all;
  for (int round = 0; round < kRounds; ++round) {
    for (int number = 0; number < kAtOnce; ++number) {
      const std::string messageId = "m" + std::to_string(round * kAtOnce + number);
      extension.start(receiptPush(messageId));
      all.insert(messageId);
    }
    ASSERT_TRUE(extension.deliveries().waitFor(all.size()));
  }
  for (const auto module : {kQXE, kMAM}) {
    MessageIds accounted = storedMessages(module);
    const std::lock_guard lock(mutex);
    accounted.merge(MessageIds(acknowledged[module == kMAM ? 1 : 0]));
    EXPECT_EQ(accounted, all) << stringValue(module);
  }
}

}  // namespace
}  // namespace QXExtensionSDK
