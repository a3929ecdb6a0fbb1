#include <cstddef>
#include <cstdint>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/JSON.h"

// What was read can be written, in both styles, and reads back as the same value.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using QXPlatform::JSONStyle;
  const auto value = QXPlatform::parseJSON({reinterpret_cast<const char*>(data), size});
  if (!value) return 0;
  for (const JSONStyle style : {JSONStyle::compact, JSONStyle::pretty}) {
    const auto text = QXPlatform::writeJSON(*value, style);
    if (!text) QXPlatform::fatalError("Refused to write what was read");
    const auto back = QXPlatform::parseJSON(*text);
    if (!back || !(*back == *value)) QXPlatform::fatalError("Read back as something else");
  }
  return 0;
}
