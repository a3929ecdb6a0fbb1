#include "agent/webpush/KeyBytes.h"

#include "agent/webpush/P256.h"

namespace QXAgent {

std::string toBytes(const SubscriptionKeys& keys) {
  return std::string(keys.privateKey.view()).append(keys.publicKey.view()).append(keys.auth.view());
}

std::optional<SubscriptionKeys> keysFromBytes(std::string_view bytes) {
  if (bytes.size() != kKeyBytes) return std::nullopt;
  const auto part = [&](std::size_t begin, std::size_t size) {
    return QXPlatform::Data(std::string(bytes.substr(begin, size)));
  };
  constexpr std::size_t kAuth = kPrivateKeySize + kPublicKeySize;
  return SubscriptionKeys{part(0, kPrivateKeySize), part(kPrivateKeySize, kPublicKeySize),
                          part(kAuth, kKeyBytes - kAuth)};
}

}  // namespace QXAgent
