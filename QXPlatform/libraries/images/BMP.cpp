// No packaged library reads this format alone, and there is little to it.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <vector>

#include "QXPlatform/libraries/images/Codecs.h"

namespace QXPlatform {

namespace {

using Pixel = std::array<std::uint8_t, 4>;

std::uint32_t littleEndian(std::string_view bytes, std::size_t position, std::size_t count) {
  std::uint32_t value = 0;
  for (std::size_t i = count; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[position + i]);
  return value;
}

struct Header {
  std::size_t pixelsAt = 0;
  std::size_t colorsAt = 0;
  PixelSize size;
  bool isTopDown = false;
  unsigned bitsAPixel = 0;
  std::array<std::uint32_t, 4> masks{};  // red, green, blue, alpha; of pixels without a colour table
  std::size_t rowBytes = 0;
};

constexpr std::size_t kFileHeaderBytes = 14;
constexpr std::size_t kInfoBytes = 40;

bool readMasks(std::string_view bytes, std::size_t infoBytes, bool areGiven, Header& header) {
  constexpr std::size_t kMasksAt = kFileHeaderBytes + kInfoBytes;
  if (!areGiven) {
    if (header.bitsAPixel == 16) {
      header.masks = {0x7C00, 0x03E0, 0x001F, 0};
    } else {
      header.masks = {0xFF0000, 0x00FF00, 0x0000FF, 0};
    }
    return true;
  }
  if (bytes.size() < kMasksAt + 16) return false;
  const std::size_t count = infoBytes >= kInfoBytes + 16 ? 4 : 3;
  for (std::size_t i = 0; i < count; ++i) header.masks[i] = littleEndian(bytes, kMasksAt + i * 4, 4);
  return true;
}

// Nothing when the pixels are not all there, or come with run lengths.
std::optional<Header> readHeader(std::string_view bytes) {
  constexpr std::uint32_t kPlain = 0;
  constexpr std::uint32_t kMasks = 3;
  if (bytes.size() < kFileHeaderBytes + kInfoBytes) return std::nullopt;
  const std::size_t infoBytes = littleEndian(bytes, kFileHeaderBytes, 4);
  const auto width = static_cast<std::int32_t>(littleEndian(bytes, 18, 4));
  const auto height = static_cast<std::int32_t>(littleEndian(bytes, 22, 4));
  const std::uint32_t compression = littleEndian(bytes, 30, 4);
  if (infoBytes < kInfoBytes || width <= 0 || height == 0 ||
      height == std::numeric_limits<std::int32_t>::min()) {
    return std::nullopt;
  }
  Header header;
  header.pixelsAt = littleEndian(bytes, 10, 4);
  header.size = {width, std::abs(height)};
  header.isTopDown = height < 0;
  header.bitsAPixel = littleEndian(bytes, 28, 2);
  constexpr std::array kDepths{1U, 4U, 8U, 16U, 24U, 32U};
  if (std::ranges::find(kDepths, header.bitsAPixel) == kDepths.end()) return std::nullopt;
  const bool hasMasks = compression == kMasks && (header.bitsAPixel == 16 || header.bitsAPixel == 32);
  if (compression != kPlain && !hasMasks) return std::nullopt;
  header.colorsAt = kFileHeaderBytes + infoBytes;
  header.rowBytes = (static_cast<std::size_t>(width) * header.bitsAPixel + 31) / 32 * 4;
  const bool isWhole =
      header.pixelsAt <= bytes.size() &&
      (bytes.size() - header.pixelsAt) / header.rowBytes >= static_cast<std::size_t>(header.size.height);
  if (!isWhole || !readMasks(bytes, infoBytes, hasMasks, header)) return std::nullopt;
  return header;
}

std::uint8_t channel(std::uint32_t pixel, std::uint32_t mask, std::uint8_t absent) {
  if (mask == 0) return absent;
  const int shift = std::countr_zero(mask);
  const std::uint64_t value = (pixel & mask) >> shift;
  return static_cast<std::uint8_t>(value * 0xFF / (mask >> shift));
}

std::array<Pixel, 256> readColors(std::string_view bytes, const Header& header) {
  std::array<Pixel, 256> colors{};
  for (std::size_t i = 0; i < colors.size(); ++i) {
    const std::size_t at = header.colorsAt + i * 4;
    if (at + 4 > std::min(bytes.size(), header.pixelsAt)) break;
    const std::uint32_t color = littleEndian(bytes, at, 4);
    colors[i] = {static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
                 static_cast<std::uint8_t>(color), 0xFF};
  }
  return colors;
}

Pixel pixelAt(std::string_view row, std::size_t x, const Header& header,
              const std::array<Pixel, 256>& colors) {
  const unsigned bits = header.bitsAPixel;
  if (bits <= 8) {
    const std::size_t bit = x * bits;
    const unsigned byte = static_cast<unsigned char>(row[bit / 8]);
    return colors[byte >> (8 - bits - bit % 8) & ((1U << bits) - 1)];
  }
  const std::uint32_t pixel = littleEndian(row, x * (bits / 8), bits / 8);
  const auto& masks = header.masks;
  return {channel(pixel, masks[0], 0), channel(pixel, masks[1], 0), channel(pixel, masks[2], 0),
          channel(pixel, masks[3], 0xFF)};
}

}  // namespace

bool decodeBMP(std::string_view bytes, ImageSink& sink) {
  const auto header = readHeader(bytes);
  if (!header || !sink.begin(header->size, {}, {})) return false;
  const auto colors = readColors(bytes, *header);
  const auto height = static_cast<std::size_t>(header->size.height);
  std::vector<Pixel> pixels(static_cast<std::size_t>(header->size.width));
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t line = header->isTopDown ? y : height - 1 - y;
    const std::string_view row = bytes.substr(header->pixelsAt + line * header->rowBytes, header->rowBytes);
    for (std::size_t x = 0; x < pixels.size(); ++x) pixels[x] = pixelAt(row, x, *header, colors);
    sink.addRow(pixels.front().data());
  }
  return true;
}

}  // namespace QXPlatform
