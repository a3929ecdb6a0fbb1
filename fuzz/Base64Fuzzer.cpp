#include <cstddef>
#include <cstdint>

#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/FatalError.h"

// Decoding has one text for every byte string, so encoding must give back the very text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  if (const auto bytes = QXPlatform::decodeBase64(input)) {
    if (QXPlatform::encodeBase64(bytes->view()) != input)
      QXPlatform::fatalError("Decoded what is not canonical");
  }
  const auto back = QXPlatform::decodeBase64(QXPlatform::encodeBase64(input));
  if (!back || back->view() != input) QXPlatform::fatalError("Encoded to something else");
  return 0;
}
