#include <cstddef>
#include <cstdint>

#include "platform/foundation/Base64.h"
#include "platform/foundation/FatalError.h"

// Decoding has one text for every byte string, so encoding must give back the very text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  if (const auto bytes = platform::decodeBase64(input)) {
    if (platform::encodeBase64(bytes->view()) != input) platform::fatalError("Decoded what is not canonical");
  }
  const auto back = platform::decodeBase64(platform::encodeBase64(input));
  if (!back || back->view() != input) platform::fatalError("Encoded to something else");
  return 0;
}
