// `qx send`: what a push service gets, and what its answers mean.

#include "QXPlatform/foundation/JSON.h"
#include "agent/webpush/Base64URL.h"
#include "agent/webpush/WebPush.h"
#include "tests/support/Program.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"

namespace {

using QXAgent::encodeBase64URL;
using QXPlatform::Dictionary;
using support::ProgramResult;
using testing::EndsWith;
using testing::HasSubstr;

const std::string kPush = R"({"_sid":"VTQX","aps":{"alert":"é","n":1.5}})";

class SendCommandTest : public testing::Test {
 protected:
  // As a browser writes a subscription.
  std::string subscription(const std::string& endpoint) const {
    const Dictionary keys{{"p256dh", encodeBase64URL(keys_.publicKey.view())},
                          {"auth", encodeBase64URL(keys_.auth.view())}};
    return directory_.write("subscription.json",
                            Dictionary{{"endpoint", endpoint}, {"keys", keys}}.description());
  }
  // As the agent prints it.
  std::string endpointLine(const std::string& endpoint) const {
    return directory_.write("endpoint.json",
                            Dictionary{{"endpoint", endpoint},
                                       {"publicKey", encodeBase64URL(keys_.publicKey.view())},
                                       {"auth", encodeBase64URL(keys_.auth.view())}}
                                .description());
  }
  ProgramResult send(std::vector<std::string> arguments, const std::string& push = kPush) const {
    arguments.insert(arguments.begin(), {"send", "-", "--subscription"});
    return support::runProgram("qx", arguments, push);
  }

  const support::TemporaryDirectory directory_;
  const std::string vapid_ = directory_.path("new/vapid.json");
  const QXAgent::SubscriptionKeys keys_ = QXAgent::makeSubscriptionKeys();
};

TEST_F(SendCommandTest, PostsWhatOnlyTheReceiverOpens) {
  const backend::LoopbackServer service({.status = 201});
  std::vector<std::string> senders;
  for (const auto& file : {subscription(service.url("/p/1")), endpointLine(service.url("/p/1"))}) {
    const auto sent = send({file, "--vapid", vapid_, "--ttl", "60"});
    ASSERT_EQ(sent.exitCode, 0) << sent.errors;
    const auto request = service.requests().back();
    EXPECT_EQ(sent.lines().at(0),
              (Dictionary{{"status", std::int64_t{201}},
                          {"sealedBytes", static_cast<std::int64_t>(request.body.size())}}));
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/p/1");
    EXPECT_EQ(request.header("Content-Encoding"), "aes128gcm");
    EXPECT_EQ(request.header("TTL"), "60");
    const auto opened = QXAgent::openMessage(keys_, request.body);
    ASSERT_TRUE(opened) << opened.error().message;
    EXPECT_EQ(*opened, kPush);
    const std::string authorization(request.header("Authorization").value());
    senders.push_back(authorization.substr(authorization.find(", k=")));
  }
  EXPECT_EQ(senders[0], senders[1]) << "the key that was made is kept";
  EXPECT_EQ(std::filesystem::status(vapid_).permissions(), std::filesystem::perms(0600));
}

TEST_F(SendCommandTest, SaysWhatTheServicesAnswerMeans) {
  const struct {
    int status;
    std::string meaning;
  } table[] = {
      {404, ": the subscription is gone"},     {410, ": the subscription is gone"},
      {413, ": the push is too large for it"}, {403, ": it does not take pushes of this sender"},
      {429, ": too many pushes; wait: 30"},    {500, ""},
  };
  for (const auto& [status, meaning] : table) {
    const backend::LoopbackServer service({.status = status, .headers = {{"Retry-After", "30"}}});
    const auto sent = send({subscription(service.url()), "--vapid", vapid_});
    EXPECT_EQ(sent.exitCode, 1);
    EXPECT_EQ(sent.lines().at(0).find("status")->integer(), status);
    EXPECT_THAT(sent.errors, EndsWith("qx send: standard input: the push service answered " +
                                      std::to_string(status) + meaning + "\n"));
  }
}

TEST_F(SendCommandTest, SealsUpToWhatFitsWithoutSending) {
  const auto withText = [](std::size_t size) { return R"({"aps":{"x":")" + std::string(size, 'x') + "\"}}"; };
  const std::string file = subscription("https://push.example.net/1");
  const auto sealed = send({file, "--seal-only"}, withText(QXAgent::kMostMessageBytes - 16));
  EXPECT_EQ(sealed.exitCode, 0) << sealed.errors;
  EXPECT_EQ(sealed.output.size(), QXAgent::kMostSealedBytes);
  EXPECT_TRUE(QXAgent::openMessage(keys_, sealed.output));
  const auto refused = send({file, "--seal-only"}, withText(QXAgent::kMostMessageBytes - 15));
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.output, "");
  EXPECT_EQ(refused.errors, "qx send: standard input: 3994 bytes are more than the 3993 that fit\n");
  EXPECT_THAT(send({file, "--seal-only"}, kPush + "\n" + kPush).errors, HasSubstr("only one push"));
}

TEST_F(SendCommandTest, RefusesFilesThatHoldNoKeys) {
  const std::string good = subscription("https://push.example.net/1");
  const struct {
    std::string subscription;
    std::string reason;
  } table[] = {
      {R"({"endpoint":"push","keys":{"p256dh":"BA","auth":"BA"}})", ": endpoint is no URL to post to\n"},
      {R"({"endpoint":"https://a"})", ": no keys\n"},
      {R"({"endpoint":"https://a","keys":{"p256dh":"BA==","auth":"BA"}})",
       ": a key is not base64url without padding\n"},
      {R"({"endpoint":"https://a","keys":{"p256dh":"BA","auth":"BA"}})",
       ": the subscription's public key is no point of the curve\n"},
      {"[]", ": expected an object, found an array\n"},
  };
  for (const auto& [text, reason] : table) {
    const auto sent = send({directory_.write("bad.json", text), "--vapid", vapid_});
    EXPECT_EQ(sent.exitCode, 1);
    EXPECT_THAT(sent.errors, EndsWith(reason));
  }
  for (const std::string sender : {R"({"privateKey":"BA","subject":"mailto:a"})", "{}"}) {
    const auto sent = send({good, "--vapid", directory_.write("sender.json", sender)});
    EXPECT_EQ(sent.exitCode, 1);
    EXPECT_NE(sent.errors, "");
  }
  EXPECT_THAT(send({good, "--vapid", good + "/vapid.json"}).errors, EndsWith(": cannot be written\n"));
  EXPECT_FALSE(std::filesystem::exists(vapid_)) << "nothing is made for a push that is not sent";
}

}  // namespace
