#include "agent/webpush/WebPush.h"

#include <openssl/rand.h>

#include <cstdint>
#include <optional>

#include "agent/webpush/Cryptography.h"
#include "agent/webpush/KeyDerivation.h"
#include "agent/webpush/P256.h"
#include "agent/webpush/RecordCipher.h"

namespace QXAgent {

namespace {

using QXPlatform::Data;
using QXPlatform::Error;
using QXPlatform::Result;

constexpr std::size_t kAuthSize = 16;
// Salt, record size in four bytes, length of the sender's key in one, the key.
constexpr std::size_t kHeaderSize = kSaltSize + 4 + 1 + kPublicKeySize;
constexpr char kLastRecord = '\x02';
static_assert(kMostMessageBytes == kMostSealedBytes - kHeaderSize - 1 - kTagSize);

std::string randomBytes(std::size_t size) {
  std::string bytes(size, '\0');
  require(RAND_bytes(octets(bytes), static_cast<int>(size)) == 1);
  return bytes;
}

struct Sealed {
  std::string_view salt;
  std::string_view senderPublicKey;
  std::string_view record;  // with the tag
};

std::uint32_t bigEndian(std::string_view bytes) {
  std::uint32_t number = 0;
  for (const char byte : bytes) number = number << 8U | static_cast<unsigned char>(byte);
  return number;
}

Result<Sealed> parse(std::string_view body) {
  constexpr std::uint32_t kSmallestRecord = 18;
  if (body.size() > kMostSealedBytes) return Error{"the message is too large"};
  if (body.size() <= kHeaderSize + kTagSize) return Error{"the message is cut off"};
  const std::uint32_t recordSize = bigEndian(body.substr(kSaltSize, 4));
  const auto keySize = static_cast<unsigned char>(body[kSaltSize + 4]);
  if (keySize != kPublicKeySize) return Error{"the message has no sender's key"};
  const auto record = body.substr(kHeaderSize);
  if (recordSize < kSmallestRecord || record.size() > recordSize)
    return Error{"the message is not one record"};
  return Sealed{body.substr(0, kSaltSize), body.substr(kHeaderSize - kPublicKeySize, kPublicKeySize), record};
}

}  // namespace

SubscriptionKeys makeSubscriptionKeys() {
  const P256Key key = makeP256Key();
  return {privateKeyBytes(key), publicKeyBytes(key), Data(randomBytes(kAuthSize))};
}

Result<std::string> openMessage(const SubscriptionKeys& keys, std::string_view body) {
  const auto sealed = parse(body);
  if (!sealed) return sealed.error();
  const P256Key own = p256PrivateKey(keys.privateKey.view(), keys.publicKey.view());
  if (!own) return Error{"the subscription's keys are damaged"};
  const P256Key sender = p256PublicKey(sealed->senderPublicKey);
  if (!sender) return Error{"the sender's key is no point of the curve"};
  const auto contentKeys = deriveContentKeys(
      {own, sender, keys.publicKey.view(), sealed->senderPublicKey, keys.auth.view()}, sealed->salt);
  auto text = contentKeys ? decryptRecord(*contentKeys, sealed->record) : std::nullopt;
  if (!text) return Error{"the message is not for these keys, or was changed on its way"};
  const std::size_t end = text->find_last_not_of('\0');
  if (end == std::string::npos || (*text)[end] != kLastRecord) return Error{"the message has no end"};
  text->resize(end);
  return std::move(*text);
}

Result<std::string> sealMessage(const Subscription& subscription, std::string_view message) {
  if (message.size() > kMostMessageBytes) {
    return Error{std::to_string(message.size()) + " bytes are more than the " +
                 std::to_string(kMostMessageBytes) + " that fit"};
  }
  const P256Key receiver = p256PublicKey(subscription.publicKey.view());
  if (!receiver) return Error{"the subscription's public key is no point of the curve"};
  if (subscription.auth.size() != kAuthSize) return Error{"the subscription's auth is not 16 bytes"};
  const P256Key own = makeP256Key();
  const Data senderPublicKey = publicKeyBytes(own);
  const std::string salt = randomBytes(kSaltSize);
  const auto contentKeys = deriveContentKeys(
      {own, receiver, subscription.publicKey.view(), senderPublicKey.view(), subscription.auth.view()}, salt);
  require(contentKeys.has_value());
  std::string body = salt;
  for (const unsigned shift : {24U, 16U, 8U, 0U}) body += static_cast<char>(kMostSealedBytes >> shift);
  body += static_cast<char>(kPublicKeySize);
  body.append(senderPublicKey.view());
  return body + encryptRecord(*contentKeys, std::string(message) + kLastRecord);
}

}  // namespace QXAgent
