#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/FatalError.h"
#include "agent/webpush/Base64URL.h"
#include "agent/webpush/KeyDerivation.h"
#include "agent/webpush/P256.h"
#include "agent/webpush/RecordCipher.h"
#include "agent/webpush/WebPush.h"

namespace {

using namespace QXAgent;

// Always the same keys and salt, so that what is found is found again.
P256Key keyOf(char byte) {
  return p256PrivateKey(std::string(kPrivateKeySize, byte));
}

const SubscriptionKeys& receiver() {
  static const SubscriptionKeys keys{privateKeyBytes(keyOf('r')), publicKeyBytes(keyOf('r')),
                                     QXPlatform::Data(std::string(16, 'a'))};
  return keys;
}

// The body with this text in its record, whatever its end is.
std::string seal(std::string_view text) {
  static const P256Key own = keyOf('s');
  static const P256Key other = p256PublicKey(receiver().publicKey.view());
  static const std::string publicKey(publicKeyBytes(own).view());
  static const std::string salt(kSaltSize, 't');
  static const auto keys =
      deriveContentKeys({own, other, receiver().publicKey.view(), publicKey, receiver().auth.view()}, salt);
  return salt + std::string("\0\1\0\0\x41", 5) + publicKey + encryptRecord(*keys, text);
}

// What a record's text holds before its end and any number of zeros.
std::optional<std::string_view> messageIn(std::string_view text) {
  while (text.ends_with('\0')) text.remove_suffix(1);
  if (!text.ends_with('\2')) return std::nullopt;
  return text.substr(0, text.size() - 1);
}

}  // namespace

// Any bytes are refused as a body; sealed, they open as what they hold; and no body opens that one byte was
// changed of.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  if (openMessage(receiver(), input)) QXPlatform::fatalError("Opened what nobody sealed");

  std::string body = seal(input);
  const auto message = openMessage(receiver(), body);
  const auto expected = body.size() <= kMostSealedBytes ? messageIn(input) : std::nullopt;
  if (static_cast<bool>(message) != expected.has_value() || (expected && *message != *expected))
    QXPlatform::fatalError("Opened something else than was sealed");

  const std::size_t place = size == 0 ? 0 : data[0] * std::size_t{31} % body.size();
  // All but the size of the record, which may be any that holds it.
  if (place < 16 || place >= 20) {
    body[place] = static_cast<char>(body[place] ^ 1);
    if (openMessage(receiver(), body)) QXPlatform::fatalError("Opened what was changed on its way");
  }
  if (decodeBase64URL(encodeBase64URL(input))->view() != input)
    QXPlatform::fatalError("Encoded to something else");
  return 0;
}
