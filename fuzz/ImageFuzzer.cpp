#include <cstddef>
#include <cstdint>
#include <string>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/images/ImageBytes.h"

// What tells whole images from cut ones, and what they cost, reads bytes that a server chose; neither changes
// with what follows a whole image.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string image(reinterpret_cast<const char*>(data), size);
  const auto format = QXPlatform::imageFormatOf(image);
  const bool affordable = QXPlatform::isImageAffordable(image, format);
  if (!QXPlatform::isImageComplete(image, format)) return 0;
  image += '\xFF';
  if (QXPlatform::imageFormatOf(image) != format || !QXPlatform::isImageComplete(image, format) ||
      QXPlatform::isImageAffordable(image, format) != affordable) {
    QXPlatform::fatalError("Followed by another byte, the image is another");
  }
  return 0;
}
