#include "agent/webpush/RecordCipher.h"

#include <openssl/evp.h>

#include "QXPlatform/foundation/Handle.h"
#include "agent/webpush/Cryptography.h"

namespace QXAgent {

namespace {

using CipherContext = QXPlatform::Handle<EVP_CIPHER_CTX, &EVP_CIPHER_CTX_free>;

constexpr int kEncrypt = 1;
constexpr int kDecrypt = 0;

CipherContext begin(const ContentKeys& keys, int direction) {
  CipherContext context(EVP_CIPHER_CTX_new());
  require(EVP_CipherInit_ex2(context.get(), EVP_aes_128_gcm(), octets(std::string_view(keys.key)),
                             octets(std::string_view(keys.nonce)), direction, nullptr) == 1);
  return context;
}

std::string run(const CipherContext& context, std::string_view text) {
  std::string result(text.size(), '\0');
  int size = 0;
  require(EVP_CipherUpdate(context.get(), octets(result), &size, octets(text),
                           static_cast<int>(text.size())) == 1);
  return result;
}

// A stream cipher gives nothing at its end; decryption learns here whether the tag is right.
bool end(const CipherContext& context) {
  unsigned char nothing = 0;
  int size = 0;
  return EVP_CipherFinal_ex(context.get(), &nothing, &size) == 1;
}

void moveTag(const CipherContext& context, int operation, std::string& tag) {
  require(EVP_CIPHER_CTX_ctrl(context.get(), operation, static_cast<int>(tag.size()), tag.data()) == 1);
}

}  // namespace

std::string encryptRecord(const ContentKeys& keys, std::string_view text) {
  const CipherContext context = begin(keys, kEncrypt);
  const std::string encrypted = run(context, text);
  require(end(context));
  std::string tag(kTagSize, '\0');
  moveTag(context, EVP_CTRL_GCM_GET_TAG, tag);
  return encrypted + tag;
}

std::optional<std::string> decryptRecord(const ContentKeys& keys, std::string_view record) {
  const CipherContext context = begin(keys, kDecrypt);
  std::string text = run(context, record.substr(0, record.size() - kTagSize));
  std::string tag(record.substr(record.size() - kTagSize));
  moveTag(context, EVP_CTRL_GCM_SET_TAG, tag);
  return end(context) ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace QXAgent
