#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/Result.h"

namespace QXAgent {

// Web Push messages: RFC 8291 over one record of aes128gcm, RFC 8188. Any thread may call. Errors name
// neither keys nor contents.

// What a push service takes, and what of it is left for the message.
inline constexpr std::size_t kMostSealedBytes = 4096;
inline constexpr std::size_t kMostMessageBytes = 3993;

// What a sender knows of a receiver.
struct Subscription {
  QXPlatform::Data publicKey;  // 65 bytes: the uncompressed point of P-256
  QXPlatform::Data auth;       // 16 bytes
};

// What the receiver keeps: never to be logged, never to leave the machine but for what Subscription has.
struct SubscriptionKeys {
  QXPlatform::Data privateKey;  // 32 bytes
  QXPlatform::Data publicKey;
  QXPlatform::Data auth;

  Subscription subscription() const { return {publicKey, auth}; }
};

// Fresh keys from the system's randomness.
SubscriptionKeys makeSubscriptionKeys();

// The message in a sealed body. Fails for anything else than one whole record for these very keys.
QXPlatform::Result<std::string> openMessage(const SubscriptionKeys& keys, std::string_view sealed);

// The body that carries the message to this subscription, by a fresh sender's key. Fails when the
// subscription's keys are none, or the message is too long.
QXPlatform::Result<std::string> sealMessage(const Subscription& subscription, std::string_view message);

}  // namespace QXAgent
