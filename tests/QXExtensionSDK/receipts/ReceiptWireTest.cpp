// Every way in which the wire can fail, end to end: what becomes of the notification, the receipts and the
// log.

#include "tests/QXExtensionSDK/receipts/ReceiptTestKit.h"

#include <fcntl.h>
#include <sys/file.h>

#include "QXTestSupport/ManualClock.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FileCalls.h"
#include "tests/support/Program.h"

namespace QXExtensionSDK {
namespace {

constexpr std::size_t kAlmostOneMegabyte = 1'000'000;

using MessageIds = std::multiset<std::string>;
using backend::Fault;
using backend::LoopbackServer;
using backend::Request;
using backend::Response;

constexpr auto kExecutor = "error Network: ServiceManager NetworkExecutor error ";
constexpr auto kDecoder = "error Network: ServiceManager ResponseDecoder error Error decoding data ";

const std::string kTimedOut = "error DeliveryReceipt: Delivery receipt processing timed out";

enum class Left { nothing, failed, pending };

void expectLeft(Left left) {
  for (const auto module : {kQXE, kMAM}) {
    const auto stored = ReceiptHost::stored(module);
    ASSERT_EQ(stored.size(), left == Left::nothing ? 0U : 1U) << stringValue(module);
    if (left == Left::nothing) continue;
    EXPECT_EQ(stored[0].messageId(), "m1");
    EXPECT_EQ(stored[0].status(), left == Left::failed ? PNStatus::failed : PNStatus::pending);
  }
}

std::size_t count(const std::vector<std::string>& lines, const std::string& beginning,
                  const std::string& ending = "") {
  return static_cast<std::size_t>(std::ranges::count_if(
      lines, [&](const std::string& line) { return line.starts_with(beginning) && line.ends_with(ending); }));
}

void expectNoSecret(const support::ScopedLogRecorder& log) {
  for (const std::string& secret : kSecrets) EXPECT_FALSE(log->mentions(secret)) << secret;
}

struct WireCase {
  std::string name;
  Response response;
  Left left;
  std::string line;  // how the line of either module begins
  std::string ending = {};
};

Response json(int status, std::string body = "{}") {
  return {.status = status, .headers = {{"Content-Type", "application/json"}}, .body = std::move(body)};
}

Response faulty(Fault fault) {
  Response response = json(200, R"({"code":200})");
  response.fault = fault;
  return response;
}

std::string failedWith(int status, int bytes) {
  return kExecutor + ("Failed with status code: " + std::to_string(status)) + " and data " +
         std::to_string(bytes) + " bytes.";
}

std::string allSecrets() {
  std::string all;
  for (const std::string& secret : kSecrets) all += secret + " ";
  return all;
}

std::string lists(std::size_t size) {
  std::string text;
  while (text.size() < size) text += "[1],";
  return text;
}

const std::string kSuccess = "debug Network: ServiceManager success ";

TEST(ReceiptWireTest, EveryAnswerLeavesTheReceiptsInTheirState) {
  const WireCase cases[] = {
      {"Dropped", faulty(Fault::closeWithoutAnswer), Left::failed, std::string(kExecutor) + "127.0.0.1: "},
      {"NoContent", {.status = 204}, Left::failed, kDecoder, "."},
      {"ServerError", json(500, ""), Left::failed, failedWith(500, 0)},
      {"NotJSON", json(200, "<html>"), Left::failed, kDecoder, "."},
      {"NodesAsText", json(200, R"({"nodes":"none"})"), Left::nothing, kSuccess},
      {"NodesOfNumbers", json(200, R"({"nodes":[7]})"), Left::nothing, kSuccess},
      {"ResponseAsNumber", json(200, R"({"nodes":[{"response":7}]})"), Left::nothing, kSuccess},
      {"AlmostOneMegabyte", json(200, R"({"body":")" + std::string(kAlmostOneMegabyte, 'x') + "\"}"),
       Left::nothing, kSuccess},
      {"TwoMegabytes", json(200, R"({"body":")" + std::string(2 * kAlmostOneMegabyte, 'x') + "\"}"),
       Left::failed, std::string(kExecutor) + "127.0.0.1: the answer is larger than 1 MB"},
      {"AlmostOneMegabyteOfLists", json(200, R"({"body":[)" + lists(kAlmostOneMegabyte) + "[]]}"),
       Left::failed, kDecoder, "the JSON text needs more than 2 MB."},
      {"Echo",
       json(200, R"({"code":1,"message":")" + allSecrets() + R"(","requestId":")" + allSecrets() +
                     R"(","body":")" + allSecrets() + R"(","nodes":[{"name":")" + allSecrets() + R"("}]})"),
       Left::nothing, kSuccess},
      {"EchoOfAnotherShape", json(200, R"({"code":")" + allSecrets() + R"("})"), Left::failed, kDecoder,
       "."}};
  for (const WireCase& wire : cases) {
    SCOPED_TRACE(wire.name);
    const LoopbackServer server({.handler = [&](const Request&) { return wire.response; }});
    const ReceiptHost host(server.url());
    const support::ScopedLogRecorder log;
    Extension extension;
    ASSERT_TRUE(extension.push(receiptPush("m1")));
    expectLeft(wire.left);
    EXPECT_TRUE(support::eventually([&] { return count(log->lines(), wire.line, wire.ending) == 2; }))
        << testing::PrintToString(log->lines());
    expectNoSecret(log);
  }
}

TEST(ReceiptConnectionTest, WithoutAConnectionTheReceiptsAreMarkedFailedAndNothingIsSent) {
  const LoopbackServer untrusted({.tls = true});
  const std::string closed = LoopbackServer().url();
  for (const std::string& url : {closed, untrusted.url()}) {
    const ReceiptHost host(url);
    const support::ScopedLogRecorder log;
    Extension extension;
    ASSERT_TRUE(extension.push(receiptPush("m1")));
    expectLeft(Left::failed);
    EXPECT_TRUE(support::eventually(
        [&] { return count(log->lines(), std::string(kExecutor) + "127.0.0.1: ") == 2; }));
    expectNoSecret(log);
  }
  EXPECT_TRUE(untrusted.requests().empty());
}

// A push that has begun, by a clock that the test moves.
struct TimedPush {
  explicit TimedPush(const std::string& url) : host(url) { extension.start(receiptPush("m1")); }

  std::optional<int> secondsUntilShown(int expected) {
    return clock.secondsUntil([this] { return extension.deliveries().count() == 1; }, expected);
  }

  const ReceiptHost host;
  const support::ScopedLogRecorder log;
  QXTestSupport::ManualClock clock;
  Extension extension;
};

TEST(ReceiptConnectionTest, AServerThatNeverAnswersEndsAtTheSessionsTwentySeconds) {
  const LoopbackServer server({.hang = true});
  TimedPush push(server.url());
  ASSERT_TRUE(server.waitForRequests(2, support::soon()));
  expectLeft(Left::pending);
  const auto seconds = push.secondsUntilShown(20);
  // The last byte of the request may count as sent in the first second.
  EXPECT_GE(seconds, 20);
  EXPECT_LE(seconds, 21);
  expectLeft(Left::failed);
  EXPECT_EQ(count(push.log->lines(), kTimedOut), 0U);
  EXPECT_TRUE(support::eventually([&] {
    return count(push.log->lines(), std::string(kExecutor) + "127.0.0.1: no progress for 20 s") == 2;
  }));
}

TEST(ReceiptConnectionTest, ATrickleHoldsTheNotificationForTwentyTwoSecondsAndCountsWhenItEnds) {
  Response slow = json(200, R"({"message":")" + std::string(300, 'x') + "\"}");
  slow.pacing = backend::Pacing{1, std::chrono::milliseconds(20)};
  const LoopbackServer server({.handler = [&](const Request&) { return slow; }});
  TimedPush push(server.url());
  ASSERT_TRUE(server.waitForRequests(2, support::soon()));
  // Every second brings a byte or two: never twenty without progress.
  const auto seconds = push.secondsUntilShown(22);
  EXPECT_EQ(seconds, 22);
  EXPECT_EQ(count(push.log->lines(), kTimedOut), 1U);
  expectLeft(Left::pending);
  // The answer comes after all.
  EXPECT_TRUE(support::eventually(
      [] { return ReceiptHost::stored(kQXE).empty() && ReceiptHost::stored(kMAM).empty(); }));
  EXPECT_TRUE(support::eventually([&] { return count(push.log->lines(), kSuccess) == 2; }));
}

TEST(ReceiptConnectionTest, ATrickleThatDoesNotEndIsGivenUpAfterAMinute) {
  Response endless = json(200, R"({"message":")" + std::string(100'000, 'x') + "\"}");
  endless.pacing = backend::Pacing{1, std::chrono::milliseconds(20)};
  const LoopbackServer server({.handler = [&](const Request&) { return endless; }});
  TimedPush push(server.url());
  ASSERT_TRUE(server.waitForRequests(2, support::soon()));
  const auto failed = [] {
    return ReceiptHost::stored(kQXE)[0].status() == PNStatus::failed &&
           ReceiptHost::stored(kMAM)[0].status() == PNStatus::failed;
  };
  EXPECT_EQ(push.clock.secondsUntil(failed, 60), 60);
  EXPECT_EQ(push.extension.deliveries().count(), 1U);
}

TEST(ReceiptConnectionTest, AContainerThatIsHeldForEverKeepsAPushForFiveSecondsInAll) {
  const LoopbackServer server;
  const ReceiptHost host(server.url());
  support::Signal held;
  support::ChildProcess holder([&] {
    ASSERT_EQ(::flock(::open(host.bundle().container().c_str(), O_RDONLY), LOCK_EX), 0);
    held.send();
    std::this_thread::sleep_for(std::chrono::seconds(60));
  });
  ASSERT_TRUE(held.await());
  const support::ScopedLogRecorder log;
  QXTestSupport::ManualClock clock;
  Extension extension;
  extension.start(receiptPush("m1"));
  const auto seconds = clock.secondsUntil([&] { return extension.deliveries().count() == 1; }, 5);
  // The push may be a second on its way to the lock, by a clock that runs this fast.
  EXPECT_GE(seconds, 5);
  EXPECT_LE(seconds, 6);
  EXPECT_EQ(count(log->lines(), kTimedOut), 0U);
  EXPECT_TRUE(log->mentions("by process " + std::to_string(holder.id()) + " ("));
  EXPECT_TRUE(server.requests().empty());
  holder.kill();
  ASSERT_TRUE(extension.push(receiptPush("m2")));
  EXPECT_EQ(server.requests().size(), 2U);
}

TEST(ReceiptConnectionTest, ARedirectTakesTheReceiptsButNoSecretAbroad) {
  const LoopbackServer elsewhere;
  const LoopbackServer server({.handler = [&](const Request& request) -> std::optional<Response> {
    return Response::redirect(308, elsewhere.url(request.path));
  }});
  const ReceiptHost host(server.url());
  const support::ScopedLogRecorder log;
  Extension extension;
  ASSERT_TRUE(extension.push(receiptPush("m1")));
  expectLeft(Left::nothing);
  expectNoSecret(log);
  ASSERT_EQ(elsewhere.requests().size(), 2U);
  for (const Request& request : elsewhere.requests()) {
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(itemsOf(request).size(), 1U);
    for (const auto& [name, value] : request.headers) {
      for (const std::string& secret : kSecrets) EXPECT_EQ(value.find(secret), std::string::npos) << name;
    }
  }
}

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
    const auto text = receiptPush(messageId).setting("aps", QXPlatform::Dictionary()).description();
    support::RunningProgram push("qx", {"push", "-"}, text);
    // The instants around an answer are those of interest.
    if (answers) server.waitForRequests(requestsBefore + 1, support::soon());
    std::this_thread::sleep_for(milliseconds(answers ? 20 : 150));
    push.kill();
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

// A process sends what is in the file, and cannot know what others are sending of it just now: so a receipt
// may be acknowledged to several, but to none is it lost.
TEST(ReceiptLossTest, ProcessesAtOnceLoseNothingAndRepeatWithinBounds) {
  constexpr std::size_t kProcesses = 8;
  constexpr std::size_t kPushes = 5;
  std::mutex mutex;
  unsigned answered = 0;
  MessageIds acknowledged[2];
  const LoopbackServer server({.handler = [&](const Request& request) -> std::optional<Response> {
    const std::lock_guard lock(mutex);
    if (answered++ % 3 == 0) return Response{.status = 500};
    acknowledged[isForMAM(request) ? 1 : 0].merge(messagesIn(request));
    return Response{.body = "{}"};
  }});
  const ReceiptHost host(server.url());
  std::set<std::string> all;
  std::vector<std::unique_ptr<support::RunningProgram>> processes;
  for (std::size_t process = 0; process < kProcesses; ++process) {
    std::string lines;
    for (std::size_t i = 0; i < kPushes; ++i) {
      const std::string id = "m" + std::to_string(process * kPushes + i);
      lines += receiptPush(id).setting("aps", QXPlatform::Dictionary()).description() + "\n";
      all.insert(id);
    }
    processes.push_back(
        std::make_unique<support::RunningProgram>("qx", std::vector<std::string>{"push", "-"}, lines));
  }
  for (const auto& process : processes) EXPECT_EQ(process->wait().exitCode, 0);
  std::size_t repeats = 0;
  for (const auto module : {kQXE, kMAM}) {
    const std::lock_guard lock(mutex);
    const MessageIds& taken = acknowledged[module == kMAM ? 1 : 0];
    std::set<std::string> accounted(taken.begin(), taken.end());
    repeats += taken.size() - accounted.size();
    const MessageIds stored = storedMessages(module);
    accounted.insert(stored.begin(), stored.end());
    EXPECT_EQ(accounted, all) << stringValue(module);
  }
  EXPECT_LE(repeats, 2 * all.size() * (kProcesses - 1));
  RecordProperty("repeats", static_cast<int>(repeats));
}

// On the disk is a record's new content when it takes the old one's place; the directory may follow.
TEST(ReceiptLossTest, APushForTwoModulesFlushesFourFilesAndNoDirectory) {
  if (!support::FileCalls::areCounted()) GTEST_SKIP() << "A sanitizer has the calls of its own";
  const LoopbackServer server({.body = "{}"});
  const ReceiptHost host(server.url());
  Extension extension;
  const support::FileCalls calls;
  ASSERT_TRUE(extension.push(receiptPush("m")));
  EXPECT_EQ(calls.flushes(), 4U);
}

}  // namespace
}  // namespace QXExtensionSDK
