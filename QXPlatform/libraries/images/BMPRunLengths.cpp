#include "QXPlatform/libraries/images/BMPRunLengths.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace QXPlatform {

namespace {

class Unpacker {
 public:
  Unpacker(std::string_view bytes, PixelSize size, unsigned bitsAPixel)
      : bytes_(bytes),
        width_(static_cast<std::size_t>(size.width)),
        height_(static_cast<std::size_t>(size.height)),
        isPacked_(bitsAPixel == 4),
        numbers_(width_ * height_) {}

  std::optional<std::vector<std::uint8_t>> unpack() {
    while (!isEnded_ && bytes_.size() >= 2) {
      const std::size_t count = next();
      const std::uint8_t value = next();
      const bool isRead = count > 0 ? repeat(count, value) : obey(value);
      if (!isRead) return std::nullopt;
    }
    const bool isWhole = isEnded_ || y_ >= height_ || (y_ + 1 == height_ && x_ >= width_);
    if (!isWhole) return std::nullopt;
    return std::move(numbers_);
  }

 private:
  std::uint8_t next() {
    const auto value = static_cast<std::uint8_t>(bytes_.front());
    bytes_.remove_prefix(1);
    return value;
  }

  void put(std::uint8_t value, std::size_t index) {
    const std::uint8_t half = index % 2 == 0 ? value >> 4 : value & 0xF;
    if (x_ < width_ && y_ < height_) numbers_[y_ * width_ + x_] = isPacked_ ? half : value;
    ++x_;
  }

  bool repeat(std::size_t count, std::uint8_t value) {
    for (std::size_t i = 0; i < count; ++i) put(value, i);
    return true;
  }

  bool obey(std::uint8_t command) {
    switch (command) {
      case 0:
        x_ = 0;
        ++y_;
        return true;
      case 1:
        isEnded_ = true;
        return true;
      case 2:
        if (bytes_.size() < 2) return false;
        x_ += next();
        y_ += next();
        return true;
      default:
        return copy(command);
    }
  }

  bool copy(std::size_t count) {
    const std::size_t length = isPacked_ ? (count + 1) / 2 : count;
    if (bytes_.size() < length) return false;
    for (std::size_t i = 0; i < count; ++i) {
      put(static_cast<std::uint8_t>(bytes_[isPacked_ ? i / 2 : i]), i);
    }
    const std::size_t evenLength = length + length % 2;
    bytes_.remove_prefix(std::min(evenLength, bytes_.size()));
    return true;
  }

  std::string_view bytes_;  // that have not been read
  const std::size_t width_;
  const std::size_t height_;
  const bool isPacked_;  // two numbers a byte
  std::vector<std::uint8_t> numbers_;
  std::size_t x_ = 0;
  std::size_t y_ = 0;
  bool isEnded_ = false;
};

}  // namespace

std::optional<std::vector<std::uint8_t>> unpackRunLengths(std::string_view bytes, PixelSize size,
                                                          unsigned bitsAPixel) {
  return Unpacker(bytes, size, bitsAPixel).unpack();
}

}  // namespace QXPlatform
