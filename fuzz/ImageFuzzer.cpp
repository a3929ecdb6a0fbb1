#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/images/ImageDecoder.h"

namespace {

#ifdef QX_SANITIZED
constexpr std::clock_t kMostSeconds = 10;  // the largest GIF takes 4, and 0.2 without the sanitizers
#else
constexpr std::clock_t kMostSeconds = 2;
#endif

// Ends the process over a decoding that takes more of the processor than an image may.
class ProcessorTime {
 public:
  ProcessorTime() = default;
  ~ProcessorTime() {
    if (std::clock() - begun_ > kMostSeconds * CLOCKS_PER_SEC)
      QXPlatform::fatalError("Too much of the processor");
  }
  ProcessorTime(const ProcessorTime&) = delete;
  ProcessorTime& operator=(const ProcessorTime&) = delete;

 private:
  const std::clock_t begun_ = std::clock();
};

std::optional<QXPlatform::Bitmap> decode(std::string_view bytes, QXPlatform::PixelSize place) {
  const ProcessorTime time;
  return QXPlatform::decodeImage(bytes, place);
}

}  // namespace

// Every decoder reads bytes that a server chose. What comes of them fits its place and is whole, and colours
// are no stronger than alpha allows; and whether an image is shown does not depend on the place.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr QXPlatform::PixelSize kPlace{32, 18};
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto bitmap = decode(bytes, kPlace);
  if (bitmap.has_value() != decode(bytes, {9, 16}).has_value()) {
    QXPlatform::fatalError("The image is shown at one size only");
  }
  if (!bitmap) return 0;
  const auto [width, height] = bitmap->size;
  const bool fits = width > 0 && height > 0 && width <= kPlace.width && height <= kPlace.height &&
                    bitmap->pixels.size() == static_cast<std::size_t>(width * height) * 4;
  if (!fits) QXPlatform::fatalError("The bitmap does not fit");
  for (std::size_t i = 0; i < bitmap->pixels.size(); i += 4) {
    const std::uint8_t* pixel = bitmap->pixels.data() + i;
    if (*std::max_element(pixel, pixel + 3) > pixel[3]) QXPlatform::fatalError("A colour beyond its alpha");
  }
  return 0;
}
