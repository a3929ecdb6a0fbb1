#include <cstddef>
#include <cstdint>

#include "platform/foundation/FatalError.h"
#include "platform/foundation/PropertyList.h"

// Whatever the bytes, reading ends, and what comes of it can be used.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto value = platform::parsePropertyList({reinterpret_cast<const char*>(data), size});
  if (value && !value->isNull() && value->description() != platform::Value(*value).description()) {
    platform::fatalError("A copy differs");
  }
  return 0;
}
