#include "QXPlatform/images/Orientation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <utility>

namespace QXPlatform {

namespace {

constexpr std::size_t kBytesAPixel = 4;

class ExifReader {
 public:
  explicit ExifReader(std::string_view exif) : exif_(exif), isBigEndian_(exif.starts_with("MM")) {}

  std::optional<std::size_t> number(std::size_t position, std::size_t count) const {
    if (position > exif_.size() || exif_.size() - position < count) return std::nullopt;
    std::size_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t at = position + (isBigEndian_ ? i : count - 1 - i);
      value = value << 8 | static_cast<unsigned char>(exif_[at]);
    }
    return value;
  }

 private:
  const std::string_view exif_;
  const bool isBigEndian_;
};

}  // namespace

Orientation orientationOfExif(std::string_view exif) {
  constexpr std::size_t kEntryBytes = 12;
  constexpr std::size_t kOrientationTag = 0x0112;
  constexpr std::array<Orientation, 8> kOrientations{{{false, false, false},
                                                      {false, true, false},
                                                      {false, true, true},
                                                      {false, false, true},
                                                      {true, false, false},
                                                      {true, true, false},
                                                      {true, true, true},
                                                      {true, false, true}}};
  const ExifReader reader(exif);
  const auto directory = reader.number(4, 4);
  const auto count = directory ? reader.number(*directory, 2) : std::nullopt;
  for (std::size_t i = 0; count && i < *count; ++i) {
    const std::size_t entry = *directory + 2 + i * kEntryBytes;
    const auto tag = reader.number(entry, 2);
    if (!tag) break;
    if (tag != kOrientationTag) continue;
    const auto value = reader.number(entry + 8, 2);
    return value && *value >= 1 && *value <= kOrientations.size() ? kOrientations[*value - 1] : Orientation();
  }
  return {};
}

Bitmap upright(Bitmap bitmap, Orientation orientation) {
  if (orientation == Orientation()) return bitmap;
  const PixelSize size = orientation.swapsAxes ? bitmap.size.transposed() : bitmap.size;
  Bitmap turned{size, std::pmr::vector<std::uint8_t>(bitmap.pixels.size()), bitmap.isOpaque};
  std::uint8_t* target = turned.pixels.data();
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x, target += kBytesAPixel) {
      int fromX = orientation.flipsHorizontally ? size.width - 1 - x : x;
      int fromY = orientation.flipsVertically ? size.height - 1 - y : y;
      if (orientation.swapsAxes) std::swap(fromX, fromY);
      const auto index = static_cast<std::size_t>(fromY) * static_cast<std::size_t>(bitmap.size.width) +
                         static_cast<std::size_t>(fromX);
      std::memcpy(target, bitmap.pixels.data() + index * kBytesAPixel, kBytesAPixel);
    }
  }
  return turned;
}

}  // namespace QXPlatform
