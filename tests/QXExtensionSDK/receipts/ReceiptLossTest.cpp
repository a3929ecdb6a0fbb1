// That no receipt is lost: not by a kill, not by pushes that are handled at once.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
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
            messageId, *QXPlatform::writeJSON(receiptPush(messageId).setting("aps", QXPlatform::Dictionary()),
                                              QXPlatform::JSONStyle::compact))),
        process_([this] {
          if (std::freopen("/dev/null", "w", stdout) == nullptr) return;
          ::execl(program_.c_str(), "qx", "push", file_.c_str(), nullptr);
        }) {}

  support::ChildProcess& process() { return process_; }

 private:
  const std::string program_ = support::programPath("qx");
  const std::string file_;
  support::ChildProcess process_;
};

// A back end that answers as the round of the test says, and knows whose receipts it has acknowledged.
class RoundsBackend {
 public:
  void beginRound(Response answer) {
    const std::lock_guard lock(mutex_);
    answer_ = std::move(answer);
  }
  MessageIds acknowledged(ExtensionModuleName module) const {
    const std::lock_guard lock(mutex_);
    return acknowledged_[module == kMAM ? 1 : 0];
  }
  const LoopbackServer& server() const { return server_; }

 private:
  Response answer(const Request& request) {
    const std::lock_guard lock(mutex_);
    if (answer_.status == 200) acknowledged_[isForMAM(request) ? 1 : 0].merge(messagesIn(request));
    return answer_;
  }

  mutable std::mutex mutex_;
  Response answer_;
  MessageIds acknowledged_[2];
  const LoopbackServer server_{{.handler = [this](const Request& request) { return answer(request); }}};
};

TEST(ReceiptLossTest, AKillAtAnyInstantLeavesEveryReceiptStoredOrAcknowledged) {
  RoundsBackend backend;
  const LoopbackServer& server = backend.server();
  const ReceiptHost host(server.url());
  const support::TemporaryDirectory pushes;
  std::mt19937 random(20);
  const auto milliseconds = [&random](int most) {
    return std::chrono::milliseconds(std::uniform_int_distribution<int>(0, most)(random));
  };

  std::set<std::string> accounted[2];
  for (int round = 0; round < 40; ++round) {
    const bool answers = round % 2 == 1;
    backend.beginRound(
        answers ? Response{.status = round % 4 == 1 ? 200 : 503, .body = "{}", .delay = milliseconds(10)}
                : Response{.status = 0, .fault = backend::Fault::neverAnswer});
    const std::size_t requestsBefore = server.requests().size();
    const std::string messageId = "m" + std::to_string(round);
    PushProcess push(pushes, messageId);
    // The instants around an answer are those of interest.
    if (answers) server.waitForRequests(requestsBefore + 1, support::soon());
    std::this_thread::sleep_for(milliseconds(answers ? 20 : 150));
    push.process().kill();
    for (const auto module : {kQXE, kMAM}) {
      const MessageIds stored = storedMessages(module);
      std::set<std::string> now(stored.begin(), stored.end());
      EXPECT_EQ(stored.size(), now.size()) << "twice in the file, round " << round;
      now.merge(backend.acknowledged(module));
      // The push that was killed has stored its receipt, or not come that far.
      std::set<std::string>& before = accounted[module == kMAM ? 1 : 0];
      if (now.contains(messageId)) before.insert(messageId);
      EXPECT_EQ(now, before) << "round " << round;
    }
  }
  // Whatever was sent had been stored before.
  for (const Request& request : server.requests()) {
    const auto& all = accounted[isForMAM(request) ? 1 : 0];
    for (const std::string& id : messagesIn(request)) EXPECT_TRUE(all.contains(id)) << id;
  }
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
