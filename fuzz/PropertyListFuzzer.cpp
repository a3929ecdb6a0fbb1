#include <cstddef>
#include <cstdint>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/PropertyList.h"

// Whatever the bytes, reading ends, and what comes of it can be used.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto value = QXPlatform::parsePropertyList({reinterpret_cast<const char*>(data), size});
  if (value && !value->isNull() && value->description() != QXPlatform::Value(*value).description()) {
    QXPlatform::fatalError("A copy differs");
  }
  return 0;
}
