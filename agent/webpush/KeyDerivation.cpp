#include "agent/webpush/KeyDerivation.h"

#include <openssl/core_names.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

#include <string>

#include "QXPlatform/foundation/Handle.h"
#include "agent/webpush/Cryptography.h"

namespace QXAgent {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kInputKeySize = 32;
constexpr std::size_t kContentKeySize = 16;
constexpr std::size_t kNonceSize = 12;

using Derivation = QXPlatform::Handle<EVP_KDF, &EVP_KDF_free>;
using DerivationContext = QXPlatform::Handle<EVP_KDF_CTX, &EVP_KDF_CTX_free>;

OSSL_PARAM parameter(const char* name, std::string_view bytes) {
  // The library only reads what its parameters point to.
  return OSSL_PARAM_construct_octet_string(name, const_cast<char*>(bytes.data()), bytes.size());
}

// HKDF over SHA-256 (RFC 5869).
std::string derive(std::string_view salt, std::string_view secret, std::string_view info, std::size_t size) {
  const Derivation derivation(EVP_KDF_fetch(nullptr, "HKDF", nullptr));
  const DerivationContext context(EVP_KDF_CTX_new(derivation.get()));
  char digest[] = "SHA256";
  const OSSL_PARAM parameters[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
      parameter(OSSL_KDF_PARAM_SALT, salt),
      parameter(OSSL_KDF_PARAM_KEY, secret),
      parameter(OSSL_KDF_PARAM_INFO, info),
      OSSL_PARAM_construct_end(),
  };
  std::string key(size, '\0');
  require(EVP_KDF_derive(context.get(), octets(key), size, parameters) == 1);
  return key;
}

}  // namespace

std::optional<ContentKeys> deriveContentKeys(const KeyAgreement& agreement, std::string_view salt) {
  const auto secret = sharedSecret(agreement.own, agreement.other);
  if (!secret) return std::nullopt;
  std::string info("WebPush: info\0"sv);
  info.append(agreement.receiverPublicKey).append(agreement.senderPublicKey);
  const std::string inputKey = derive(agreement.auth, *secret, info, kInputKeySize);
  return ContentKeys{derive(salt, inputKey, "Content-Encoding: aes128gcm\0"sv, kContentKeySize),
                     derive(salt, inputKey, "Content-Encoding: nonce\0"sv, kNonceSize)};
}

}  // namespace QXAgent
