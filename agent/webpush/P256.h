#pragma once

#include <openssl/evp.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/Handle.h"

namespace QXAgent {

// Keys of the one curve that Web Push uses. A private key is its 32 bytes, a public key the uncompressed
// point.
inline constexpr std::size_t kPrivateKeySize = 32;
inline constexpr std::size_t kPublicKeySize = 65;

using P256Key = QXPlatform::Handle<EVP_PKEY, &EVP_PKEY_free>;

P256Key makeP256Key();
// Null for what is no point of the curve.
P256Key p256PublicKey(std::string_view point);
// Null for a number out of range; the point is computed when it is not given.
P256Key p256PrivateKey(std::string_view number, std::optional<std::string_view> point = std::nullopt);

QXPlatform::Data privateKeyBytes(const P256Key& key);
QXPlatform::Data publicKeyBytes(const P256Key& key);

// What the owners of both keys can compute, and nobody else. Nothing when the keys do not go together.
std::optional<std::string> sharedSecret(const P256Key& own, const P256Key& other);

// ECDSA over SHA-256: r and s, 32 bytes each.
std::string p256Signature(const P256Key& key, std::string_view text);

}  // namespace QXAgent
