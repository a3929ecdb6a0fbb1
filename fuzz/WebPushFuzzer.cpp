#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/FatalError.h"
#include "agent/webpush/Base64URL.h"
#include "agent/webpush/WebPush.h"

// Any bytes are refused as a body; sealed, they open as they were; and no body opens that one byte was
// changed of.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const QXAgent::SubscriptionKeys keys = QXAgent::makeSubscriptionKeys();
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  if (QXAgent::openMessage(keys, input)) QXPlatform::fatalError("Opened what nobody sealed");

  const auto body = QXAgent::sealMessage(keys.subscription(), input);
  if (!body) return 0;
  const auto message = QXAgent::openMessage(keys, *body);
  if (!message || *message != input) QXPlatform::fatalError("Opened something else than was sealed");

  std::string changed = *body;
  const std::size_t place = size == 0 ? 0 : data[0] * std::size_t{31} % changed.size();
  // All but the size of the record, which may be any that holds it.
  if (place < 16 || place >= 20) {
    changed[place] = static_cast<char>(changed[place] ^ 1);
    if (QXAgent::openMessage(keys, changed)) QXPlatform::fatalError("Opened what was changed on its way");
  }
  if (QXAgent::decodeBase64URL(QXAgent::encodeBase64URL(input))->view() != input) {
    QXPlatform::fatalError("Encoded to something else");
  }
  return 0;
}
