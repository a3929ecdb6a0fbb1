#include "agent/webpush/P256.h"

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/obj_mac.h>
#include <openssl/param_build.h>

#include "agent/webpush/Cryptography.h"

namespace QXAgent {

namespace {

using QXPlatform::Data;
using QXPlatform::Handle;

using Number = Handle<BIGNUM, &BN_clear_free>;
using Group = Handle<EC_GROUP, &EC_GROUP_free>;
using Point = Handle<EC_POINT, &EC_POINT_free>;
using ParameterBuilder = Handle<OSSL_PARAM_BLD, &OSSL_PARAM_BLD_free>;
using Parameters = Handle<OSSL_PARAM, &OSSL_PARAM_free>;
using KeyContext = Handle<EVP_PKEY_CTX, &EVP_PKEY_CTX_free>;
using DigestContext = Handle<EVP_MD_CTX, &EVP_MD_CTX_free>;
using Signature = Handle<ECDSA_SIG, &ECDSA_SIG_free>;

constexpr const char* kCurve = "P-256";

bool isUncompressed(std::string_view point) {
  return point.size() == kPublicKeySize && point.front() == '\x04';
}

P256Key key(std::string_view point, const BIGNUM* number) {
  const ParameterBuilder builder(OSSL_PARAM_BLD_new());
  require(OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, kCurve, 0) == 1);
  require(OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, point.data(),
                                           point.size()) == 1);
  require(number == nullptr || OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PRIV_KEY, number) == 1);
  const Parameters parameters(OSSL_PARAM_BLD_to_param(builder.get()));
  const KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
  require(parameters != nullptr && EVP_PKEY_fromdata_init(context.get()) == 1);
  EVP_PKEY* made = nullptr;
  const int selection = number == nullptr ? EVP_PKEY_PUBLIC_KEY : EVP_PKEY_KEYPAIR;
  EVP_PKEY_fromdata(context.get(), &made, selection, parameters.get());
  return P256Key(made);
}

// The point that a private key stands for; empty when the number is none.
std::string pointOf(const BIGNUM* number) {
  const Group group(EC_GROUP_new_by_curve_name(NID_X9_62_prime256v1));
  const Point point(EC_POINT_new(group.get()));
  if (BN_is_zero(number) || BN_cmp(number, EC_GROUP_get0_order(group.get())) >= 0) return {};
  require(EC_POINT_mul(group.get(), point.get(), number, nullptr, nullptr, nullptr) == 1);
  std::string bytes(kPublicKeySize, '\0');
  require(EC_POINT_point2oct(group.get(), point.get(), POINT_CONVERSION_UNCOMPRESSED, octets(bytes),
                             bytes.size(), nullptr) == bytes.size());
  return bytes;
}

std::string bytesOf(const BIGNUM* number) {
  std::string bytes(kPrivateKeySize, '\0');
  require(BN_bn2binpad(number, octets(bytes), static_cast<int>(bytes.size())) ==
          static_cast<int>(bytes.size()));
  return bytes;
}

}  // namespace

P256Key makeP256Key() {
  P256Key made(EVP_EC_gen(kCurve));
  require(made != nullptr);
  return made;
}

P256Key p256PublicKey(std::string_view point) {
  return isUncompressed(point) ? key(point, nullptr) : nullptr;
}

P256Key p256PrivateKey(std::string_view number, std::optional<std::string_view> point) {
  if (number.size() != kPrivateKeySize || (point && !isUncompressed(*point))) return nullptr;
  const Number value(BN_bin2bn(octets(number), static_cast<int>(number.size()), nullptr));
  require(value != nullptr);
  if (point) return key(*point, value.get());
  const std::string computed = pointOf(value.get());
  return computed.empty() ? nullptr : key(computed, value.get());
}

Data privateKeyBytes(const P256Key& key) {
  BIGNUM* number = nullptr;
  require(EVP_PKEY_get_bn_param(key.get(), OSSL_PKEY_PARAM_PRIV_KEY, &number) == 1);
  const Number owner(number);
  return Data(bytesOf(number));
}

Data publicKeyBytes(const P256Key& key) {
  std::string bytes(kPublicKeySize, '\0');
  std::size_t size = 0;
  require(EVP_PKEY_get_octet_string_param(key.get(), OSSL_PKEY_PARAM_PUB_KEY, octets(bytes), bytes.size(),
                                          &size) == 1 &&
          size == bytes.size());
  return Data(std::move(bytes));
}

std::optional<std::string> sharedSecret(const P256Key& own, const P256Key& other) {
  const KeyContext context(EVP_PKEY_CTX_new_from_pkey(nullptr, own.get(), nullptr));
  std::string secret(kPrivateKeySize, '\0');
  std::size_t size = secret.size();
  const bool done = EVP_PKEY_derive_init(context.get()) == 1 &&
                    EVP_PKEY_derive_set_peer(context.get(), other.get()) == 1 &&
                    EVP_PKEY_derive(context.get(), octets(secret), &size) == 1 && size == secret.size();
  return done ? std::optional(std::move(secret)) : std::nullopt;
}

std::string p256Signature(const P256Key& key, std::string_view text) {
  const DigestContext context(EVP_MD_CTX_new());
  std::string encoded(static_cast<std::size_t>(EVP_PKEY_get_size(key.get())), '\0');
  std::size_t size = encoded.size();
  require(EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, key.get()) == 1 &&
          EVP_DigestSign(context.get(), octets(encoded), &size, octets(text), text.size()) == 1);
  const unsigned char* begin = octets(encoded);
  const Signature signature(d2i_ECDSA_SIG(nullptr, &begin, static_cast<long>(size)));
  require(signature != nullptr);
  return bytesOf(ECDSA_SIG_get0_r(signature.get())) + bytesOf(ECDSA_SIG_get0_s(signature.get()));
}

}  // namespace QXAgent
