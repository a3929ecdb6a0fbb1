// No packaged library reads this format alone, and there is little to it.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "QXPlatform/images/ImageDecoder.h"
#include "QXPlatform/libraries/images/BMPRunLengths.h"
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
  std::size_t colorBytes = 4;
  bool hasRunLengths = false;
  PixelSize size;
  bool isTopDown = false;
  unsigned bitsAPixel = 0;
  std::array<std::uint32_t, 4> masks{};  // red, green, blue, alpha; of pixels without a colour table
  std::size_t rowBytes = 0;
};

constexpr std::size_t kFileHeaderBytes = 14;
constexpr std::size_t kInfoBytes = 40;
constexpr std::size_t kOldInfoBytes = 12;
constexpr std::uint32_t kPlain = 0;
constexpr std::uint32_t kRunLengthsOfBytes = 1;
constexpr std::uint32_t kRunLengthsOfHalves = 2;
constexpr std::uint32_t kMasks = 3;

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

// What the two kinds of information say alike.
bool readSize(std::string_view bytes, std::size_t infoBytes, Header& header) {
  const bool isOld = infoBytes == kOldInfoBytes;
  if (!isOld && (infoBytes < kInfoBytes || bytes.size() < kFileHeaderBytes + kInfoBytes)) return false;
  const auto width = static_cast<std::int32_t>(littleEndian(bytes, 18, isOld ? 2 : 4));
  const auto height = static_cast<std::int32_t>(littleEndian(bytes, isOld ? 20 : 22, isOld ? 2 : 4));
  if (width <= 0 || height == 0 || height == std::numeric_limits<std::int32_t>::min()) return false;
  header.size = {width, std::abs(height)};
  header.isTopDown = height < 0;
  header.bitsAPixel = littleEndian(bytes, isOld ? 24 : 28, 2);
  header.colorBytes = isOld ? 3 : 4;
  header.pixelsAt = littleEndian(bytes, 10, 4);
  header.colorsAt = kFileHeaderBytes + infoBytes;
  header.rowBytes = (static_cast<std::size_t>(width) * header.bitsAPixel + 31) / 32 * 4;
  constexpr std::array kDepths{1U, 4U, 8U, 16U, 24U, 32U};
  return std::ranges::find(kDepths, header.bitsAPixel) != kDepths.end() && header.pixelsAt <= bytes.size();
}

// Nothing when the pixels are not all there.
std::optional<Header> readHeader(std::string_view bytes) {
  Header header;
  if (bytes.size() < kFileHeaderBytes + kOldInfoBytes) return std::nullopt;
  const std::size_t infoBytes = littleEndian(bytes, kFileHeaderBytes, 4);
  if (!readSize(bytes, infoBytes, header)) return std::nullopt;
  const std::uint32_t compression = infoBytes == kOldInfoBytes ? kPlain : littleEndian(bytes, 30, 4);
  const unsigned bits = header.bitsAPixel;
  const bool hasMasks = compression == kMasks && (bits == 16 || bits == 32);
  header.hasRunLengths =
      (compression == kRunLengthsOfBytes && bits == 8) || (compression == kRunLengthsOfHalves && bits == 4);
  if (compression != kPlain && !hasMasks && !header.hasRunLengths) return std::nullopt;
  const bool isWhole = header.hasRunLengths || (bytes.size() - header.pixelsAt) / header.rowBytes >=
                                                   static_cast<std::size_t>(header.size.height);
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
    const std::size_t at = header.colorsAt + i * header.colorBytes;
    if (at + header.colorBytes > std::min(bytes.size(), header.pixelsAt)) break;
    const std::uint32_t color = littleEndian(bytes, at, 3);
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
  auto header = readHeader(bytes);
  if (!header || !sink.begin(header->size, {}, {})) return false;
  const auto colors = readColors(bytes, *header);
  std::string_view rows = bytes.substr(header->pixelsAt);
  std::vector<std::uint8_t> unpacked;
  if (header->hasRunLengths) {
    if (long{header->size.width} * header->size.height > kMostDecodingBytes) return false;
    auto numbers = unpackRunLengths(rows, header->size, header->bitsAPixel);
    if (!numbers) return false;
    unpacked = *std::move(numbers);
    rows = {reinterpret_cast<const char*>(unpacked.data()), unpacked.size()};
    header->bitsAPixel = 8;
    header->rowBytes = static_cast<std::size_t>(header->size.width);
  }
  const auto height = static_cast<std::size_t>(header->size.height);
  std::vector<Pixel> pixels(static_cast<std::size_t>(header->size.width));
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t line = header->isTopDown ? y : height - 1 - y;
    const std::string_view row = rows.substr(line * header->rowBytes, header->rowBytes);
    for (std::size_t x = 0; x < pixels.size(); ++x) pixels[x] = pixelAt(row, x, *header, colors);
    sink.addRow(pixels.front().data());
  }
  return true;
}

}  // namespace QXPlatform
