#include <cstddef>
#include <cstdint>

#include "platform/foundation/FatalError.h"
#include "platform/foundation/JSON.h"

// What was read can be written, in both styles, and reads back as the same value.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using platform::JSONStyle;
  const auto value = platform::parseJSON({reinterpret_cast<const char*>(data), size});
  if (!value) return 0;
  for (const JSONStyle style : {JSONStyle::compact, JSONStyle::pretty}) {
    const auto text = platform::writeJSON(*value, style);
    if (!text) platform::fatalError("Refused to write what was read");
    const auto back = platform::parseJSON(*text);
    if (!back || !(*back == *value)) platform::fatalError("Read back as something else");
  }
  return 0;
}
