#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/foundation/FatalError.h"
#include "platform/ui/ImageBytes.h"

// What tells whole images from cut ones, and what they cost, reads bytes that a server chose; neither changes
// with what follows a whole image.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string image(reinterpret_cast<const char*>(data), size);
  const auto format = platform::imageFormatOf(image);
  const bool affordable = platform::isImageAffordable(image, format);
  if (!platform::isImageComplete(image, format)) return 0;
  image += '\xFF';
  if (platform::imageFormatOf(image) != format || !platform::isImageComplete(image, format) ||
      platform::isImageAffordable(image, format) != affordable) {
    platform::fatalError("Followed by another byte, the image is another");
  }
  return 0;
}
