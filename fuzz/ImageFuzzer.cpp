#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/foundation/FatalError.h"
#include "platform/ui/ImageBytes.h"

// What tells whole images from cut ones reads bytes that a server chose; what is whole stays so whatever
// follows it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string image(reinterpret_cast<const char*>(data), size);
  const auto format = platform::imageFormatOf(image);
  if (!platform::isImageComplete(image, format)) return 0;
  image += '\xFF';
  if (platform::imageFormatOf(image) != format || !platform::isImageComplete(image, format)) {
    platform::fatalError("Followed by another byte, the image is no longer whole");
  }
  return 0;
}
