#include "agent/webpush/WebPush.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "QXPlatform/foundation/JSON.h"
#include "agent/webpush/Base64URL.h"
#include "agent/webpush/KeyDerivation.h"
#include "agent/webpush/P256.h"
#include "agent/webpush/RecordCipher.h"

namespace QXAgent {
namespace {

using QXPlatform::Data;

Data bytes(std::string_view text) {
  return decodeBase64URL(text).value();
}

// The example of RFC 8291, section 5.
constexpr std::string_view kMessage = "When I grow up, I want to be a watermelon";
const SubscriptionKeys kKeys{
    bytes("q1dXpw3UpT5VOmu_cf_v6ih07Aems3njxI-JWgLcM94"),
    bytes("BCVxsr7N_eNgVRqvHtD0zTZsEc6-VV-JvLexhqUzORcxaOzi6-AYWXvTBHm4bjyPjs7Vd8pZGH6SRpkNtoIAiw4"),
    bytes("BTBZMqHH6r4Tts7J_aSIgg")};
const std::string kBody(
    bytes("DGv6ra1nlYgDCS1FRnbzlwAAEABBBP4z9KsN6nGRTbVYI_c7VJSPQTBtkgcy27mlmlMoZIIgDll6e3vC"
          "YLocInmYWAmS6TlzAC8wEqKK6PBru3jl7A_yl95bQpu6cVPTpK4Mqgkf1CXztLVBSt2Ks3oZwbuwXPXL"
          "WyouBWLVWGNWQexSgSxsj_Qulcy4a-fN")
        .view());

std::string withByte(std::size_t place, char byte) {
  std::string body = kBody;
  body.at(place) = byte;
  return body;
}

TEST(WebPushTest, OpensThePublishedExampleAndNoDamagedOne) {
  const auto message = openMessage(kKeys, kBody);
  ASSERT_TRUE(message) << message.error().message;
  EXPECT_EQ(*message, kMessage);

  const std::pair<const char*, std::string> damaged[] = {
      {"empty", ""},
      {"header alone", kBody.substr(0, 86)},
      {"no room for a tag", kBody.substr(0, 86 + 16)},
      {"cut off", kBody.substr(0, kBody.size() - 1)},
      {"longer", kBody + '\0'},
      {"over what a push service takes", kBody + std::string(kMostSealedBytes, '\0')},
      {"other salt", withByte(0, 'x')},
      {"record size too small for any", withByte(18, '\0')},
      {"record size below the record", withByte(18, '\0').replace(19, 1, 1, '\x20')},
      {"compressed sender's key", withByte(20, 33)},
      {"sender's key is no point", withByte(30, 'x')},
      {"sender's key in another form", withByte(21, '\x06')},
      {"other text", withByte(90, 'x')},
      {"other tag", withByte(kBody.size() - 1, 'x')},
  };
  for (const auto& [what, body] : damaged) EXPECT_FALSE(openMessage(kKeys, body)) << what;
}

TEST(WebPushTest, OpensNothingWithOtherOrDamagedKeys) {
  SubscriptionKeys otherAuth = kKeys;
  otherAuth.auth = makeSubscriptionKeys().auth;
  SubscriptionKeys noPoint = kKeys;
  noPoint.publicKey = Data(std::string(65, '\x04'));
  SubscriptionKeys shortKey = kKeys;
  shortKey.privateKey = Data("short");
  for (const auto& keys : {makeSubscriptionKeys(), otherAuth, noPoint, shortKey, SubscriptionKeys()}) {
    EXPECT_FALSE(openMessage(keys, kBody));
  }
}

TEST(WebPushTest, OpensWhatAnotherImplementationSealed) {
  const char* fresh = std::getenv("QX_PEER_MESSAGES");
  std::ifstream file(fresh == nullptr ? QX_PEER_MESSAGES : fresh);
  int opened = 0;
  for (std::string line; std::getline(file, line);) {
    const auto parsed = QXPlatform::parseJSON(line);
    ASSERT_TRUE(parsed);
    const auto field = [&](std::string_view key) { return bytes(parsed->find(key)->string().value()); };
    const SubscriptionKeys keys{field("privateKey"), field("publicKey"), field("auth")};
    const auto message = openMessage(keys, field("body").view());
    const bool isWhole = parsed->find("message") != nullptr;
    ASSERT_EQ(message.ok(), isWhole) << *parsed->find("name")->string();
    if (!isWhole) continue;
    EXPECT_EQ(*message, field("message").view()) << *parsed->find("name")->string();
    ++opened;
  }
  EXPECT_EQ(opened, 5);
}

TEST(WebPushTest, SealsWhatTheReceiverOpensUpToTheLimit) {
  const SubscriptionKeys keys = makeSubscriptionKeys();
  for (const auto& message :
       {std::string(), std::string("{}"), std::string("\0\x02\0", 3), std::string(kMostMessageBytes, 'x')}) {
    const auto body = sealMessage(keys.subscription(), message);
    ASSERT_TRUE(body);
    EXPECT_LE(body->size(), kMostSealedBytes);
    const auto opened = openMessage(keys, *body);
    ASSERT_TRUE(opened) << opened.error().message;
    EXPECT_EQ(*opened, message);
  }
  EXPECT_NE(*sealMessage(keys.subscription(), "twice"), *sealMessage(keys.subscription(), "twice"));
}

// A body whose record holds `record` as it is, delimiter and padding included.
std::string sealRecord(const SubscriptionKeys& keys, std::string_view recordSize, std::string_view record) {
  const P256Key sender = makeP256Key();
  const Data senderKey = publicKeyBytes(sender);
  const std::string salt(kSaltSize, 's');
  const auto contentKeys = deriveContentKeys({sender, p256PublicKey(keys.publicKey.view()),
                                              keys.publicKey.view(), senderKey.view(), keys.auth.view()},
                                             salt);
  return salt + std::string(recordSize) + '\x41' + std::string(senderKey.view()) +
         encryptRecord(*contentKeys, record);
}

TEST(WebPushTest, TakesOneLastRecordWithItsPaddingAndNoOther) {
  using namespace std::string_view_literals;
  const SubscriptionKeys keys = makeSubscriptionKeys();
  constexpr auto kSize = "\0\0\x10\0"sv;
  const struct {
    std::string_view size;
    std::string_view record;
    bool opens;
  } table[] = {
      {kSize, "{}\x02"sv, true},         {kSize, "{}\x02\0\0"sv, true}, {"\0\0\0\x12"sv, "\x02"sv, true},
      {"\0\0\0\x11"sv, "\x02"sv, false}, {kSize, "{}\x01"sv, false},    {kSize, "{}"sv, false},
      {kSize, "\0\0"sv, false},          {kSize, "{}\x02x"sv, false},   {kSize, "{}\x02\x01\0"sv, false},
  };
  for (const auto& [size, record, opens] : table) {
    EXPECT_EQ(openMessage(keys, sealRecord(keys, size, record)).ok(), opens)
        << testing::PrintToString(record);
  }
}

TEST(WebPushTest, SealsNothingThatCannotArrive) {
  const Subscription whole = makeSubscriptionKeys().subscription();
  EXPECT_FALSE(sealMessage(whole, std::string(kMostMessageBytes + 1, 'x')));
  EXPECT_FALSE(sealMessage({Data(std::string(65, '\x04')), whole.auth}, "{}"));
  EXPECT_FALSE(sealMessage({whole.auth, whole.auth}, "{}"));
  EXPECT_FALSE(sealMessage({whole.publicKey, Data("short")}, "{}"));
}

TEST(Base64URLTest, ReadsOnlyTheURLSafeAlphabetWithoutPadding) {
  EXPECT_EQ(encodeBase64URL("\xFB\xFF\xFE!"), "-__-IQ");
  EXPECT_EQ(bytes("-__-IQ").view(), "\xFB\xFF\xFE!");
  for (const std::string_view text : {"+/+A", "IQ==", "I", "IQ\n", "-__-I"}) {
    EXPECT_FALSE(decodeBase64URL(text)) << text;
  }
}

}  // namespace
}  // namespace QXAgent
