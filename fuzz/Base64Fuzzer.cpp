#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/FatalError.h"

// Encoding gives back the text that was decoded, but for the unused bits of its last character.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  if (const auto bytes = QXPlatform::decodeBase64(input)) {
    const std::string text = QXPlatform::encodeBase64(bytes->view());
    const std::size_t sure = input.size() - std::min<std::size_t>(input.size(), 4);
    if (text.size() != input.size() || text.substr(0, sure) != input.substr(0, sure)) {
      QXPlatform::fatalError("Decoded to something else");
    }
  }
  const auto back = QXPlatform::decodeBase64(QXPlatform::encodeBase64(input));
  if (!back || back->view() != input) QXPlatform::fatalError("Encoded to something else");
  return 0;
}
