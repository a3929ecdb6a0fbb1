// Every way in which the wire can fail, end to end: what becomes of the notification, the receipts and the
// log.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include "tests/QXExtensionSDK/receipts/ReceiptTestKit.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ManualClock.h"

namespace QXExtensionSDK {
namespace {

constexpr std::size_t kAlmostOneMegabyte = 1'000'000;

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

Response interim() {
  Response response = json(200);
  response.interimStatuses = {102, 103};
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
      {"CutInBody", faulty(Fault::truncatedBody), Left::failed, std::string(kExecutor) + "127.0.0.1: "},
      {"InterimAnswers", interim(), Left::nothing, kSuccess},
      {"NoContent", {.status = 204}, Left::failed, kDecoder, "."},
      {"RedirectAsGet", Response::redirect(302, "/moved"), Left::failed, failedWith(302, 0)},
      {"ServerError", json(500, ""), Left::failed, failedWith(500, 0)},
      {"NotJSON", json(200, "<html>"), Left::failed, kDecoder, "."},
      {"JSONOfAnotherShape", json(200, "[1]"), Left::failed, kDecoder, "."},
      {"WrongType", json(200, R"({"code":"200"})"), Left::failed, kDecoder, "."},
      {"UnknownKeys", json(200, R"({"x":1,"code":null})"), Left::nothing, kSuccess},
      {"NodesOfAnotherShape",
       json(200, R"({"nodes":[{"x":1,"version":"1","nodes":{},"response":{"status":200,"body":[]}}]})"),
       Left::nothing, kSuccess},
      {"NodesAsText", json(200, R"({"nodes":"none"})"), Left::nothing, kSuccess},
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

TEST(ReceiptConnectionTest, AServerThatNeverAnswersEndsAtTheSessionsTwentySeconds) {
  const LoopbackServer server({.hang = true});
  const ReceiptHost host(server.url());
  const support::ScopedLogRecorder log;
  support::InstalledManualClock clock;
  Extension extension;
  extension.start(receiptPush("m1"));
  ASSERT_TRUE(server.waitForRequests(2, support::soon()));
  expectLeft(Left::pending);
  const auto seconds = clock.secondsUntil([&] { return extension.deliveries().count() == 1; }, 20);
  // The last byte of the request may count as sent in the first second.
  EXPECT_GE(seconds, 20);
  EXPECT_LE(seconds, 21);
  expectLeft(Left::failed);
  EXPECT_EQ(count(log->lines(), kTimedOut), 0U);
  EXPECT_TRUE(support::eventually(
      [&] { return count(log->lines(), std::string(kExecutor) + "127.0.0.1: no progress for 20 s") == 2; }));
}

TEST(ReceiptConnectionTest, ATrickleHoldsTheNotificationForTwentyTwoSecondsAndCountsWhenItEnds) {
  Response slow = json(200, R"({"message":")" + std::string(300, 'x') + "\"}");
  slow.pacing = backend::Pacing{1, std::chrono::milliseconds(20)};
  const LoopbackServer server({.handler = [&](const Request&) { return slow; }});
  const ReceiptHost host(server.url());
  const support::ScopedLogRecorder log;
  support::InstalledManualClock clock;
  Extension extension;
  extension.start(receiptPush("m1"));
  ASSERT_TRUE(server.waitForRequests(2, support::soon()));
  // Every second brings a byte or two: never twenty without progress.
  const auto seconds = clock.secondsUntil([&] { return extension.deliveries().count() == 1; }, 22);
  EXPECT_EQ(seconds, 22);
  EXPECT_EQ(count(log->lines(), kTimedOut), 1U);
  expectLeft(Left::pending);
  // The answer comes after all.
  EXPECT_TRUE(support::eventually(
      [] { return ReceiptHost::stored(kQXE).empty() && ReceiptHost::stored(kMAM).empty(); }));
  EXPECT_TRUE(support::eventually([&] { return count(log->lines(), kSuccess) == 2; }));
}

TEST(ReceiptConnectionTest, ATrickleThatDoesNotEndIsGivenUpAfterAMinute) {
  Response endless = json(200, R"({"message":")" + std::string(100'000, 'x') + "\"}");
  endless.pacing = backend::Pacing{1, std::chrono::milliseconds(20)};
  const LoopbackServer server({.handler = [&](const Request&) { return endless; }});
  const ReceiptHost host(server.url());
  const support::ScopedLogRecorder log;
  support::InstalledManualClock clock;
  Extension extension;
  extension.start(receiptPush("m1"));
  ASSERT_TRUE(server.waitForRequests(2, support::soon()));
  const auto failed = [] {
    return ReceiptHost::stored(kQXE)[0].status() == PNStatus::failed &&
           ReceiptHost::stored(kMAM)[0].status() == PNStatus::failed;
  };
  EXPECT_EQ(clock.secondsUntil(failed, 60), 60);
  EXPECT_EQ(extension.deliveries().count(), 1U);
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
  support::InstalledManualClock clock;
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

}  // namespace
}  // namespace QXExtensionSDK
