#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "agent/webpush/P256.h"
#include "agent/webpush/RecordCipher.h"

namespace QXAgent {

inline constexpr std::size_t kSaltSize = 16;

// The derivation of RFC 8291: `own` is a private key of either side, `other` the public key of the other.
struct KeyAgreement {
  const P256Key& own;
  const P256Key& other;
  std::string_view receiverPublicKey;
  std::string_view senderPublicKey;
  std::string_view auth;
};
std::optional<ContentKeys> deriveContentKeys(const KeyAgreement& agreement, std::string_view salt);

}  // namespace QXAgent
