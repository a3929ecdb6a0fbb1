#include "QXPlatform/images/ImageBytes.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace QXPlatform {

namespace {

// Reads forward over bytes that may end anywhere.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : rest_(bytes) {}

  std::optional<unsigned> byte() {
    if (rest_.empty()) return std::nullopt;
    const auto value = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return value;
  }

  std::optional<std::size_t> bigEndian(std::size_t count) {
    std::size_t value = 0;
    for (; count > 0; --count) {
      const auto next = byte();
      if (!next) return std::nullopt;
      value = value << 8 | *next;
    }
    return value;
  }

  bool skip(std::size_t count) {
    if (count > rest_.size()) return false;
    rest_.remove_prefix(count);
    return true;
  }

  // Stops at the byte.
  bool skipTo(char byte) {
    const std::size_t position = rest_.find(byte);
    return position != std::string_view::npos && skip(position);
  }

  bool skipText(std::string_view text) { return rest_.substr(0, text.size()) == text && skip(text.size()); }

 private:
  std::string_view rest_;
};

constexpr std::string_view kPNGSignature = "\x89PNG\r\n\x1a\n";
constexpr std::string_view kJPEGSignature = "\xff\xd8\xff";
constexpr unsigned kMarkerPrefix = 0xFF;
constexpr unsigned kStartOfScan = 0xDA;

// Chunks up to the one that ends the image.
bool isCompletePNG(std::string_view bytes) {
  Reader reader(bytes.substr(kPNGSignature.size()));
  for (;;) {
    const auto length = reader.bigEndian(4);
    if (!length) return false;
    const bool isEnd = reader.skipText("IEND");
    if (!isEnd && !reader.skip(4)) return false;
    if (!reader.skip(*length + 4)) return false;
    if (isEnd) return true;
  }
}

// From inside the coded data of a scan to the marker behind it.
std::optional<unsigned> markerAfterScan(Reader& reader) {
  while (reader.skipTo(static_cast<char>(kMarkerPrefix))) {
    std::optional<unsigned> next;
    do next = reader.byte();
    while (next == kMarkerPrefix);
    const bool isStuffing = next == 0U;
    const bool isRestart = next && *next >= 0xD0 && *next <= 0xD7;
    if (!isStuffing && !isRestart) return next;
  }
  return std::nullopt;
}

std::optional<unsigned> nextMarker(Reader& reader) {
  if (reader.byte() != kMarkerPrefix) return std::nullopt;
  std::optional<unsigned> next;
  do next = reader.byte();
  while (next == kMarkerPrefix);
  return next;
}

// What the decoder's work on a JPEG depends on.
struct JPEGLayout {
  bool isProgressive = false;
  std::size_t components = 0;
  std::size_t coefficientBytes = 0;  // of all components, unpacked
  std::size_t scans = 0;
  bool hasPartialScan = false;  // one without all the components
};

constexpr bool isStartOfFrame(unsigned marker) {
  constexpr unsigned kHuffmanTables = 0xC4;
  constexpr unsigned kExtension = 0xC8;
  constexpr unsigned kArithmeticConditioning = 0xCC;
  return marker >= 0xC0 && marker <= 0xCF && marker != kHuffmanTables && marker != kExtension &&
         marker != kArithmeticConditioning;
}

// Each component has its own share of the picture's resolution.
bool readFrame(Reader segment, JPEGLayout& layout) {
  constexpr std::size_t kBytesACoefficient = 2;
  const auto precision = segment.byte();
  const auto height = segment.bigEndian(2);
  const auto width = segment.bigEndian(2);
  const auto components = segment.byte();
  if (!precision || !height || !width || !components) return false;
  std::size_t mostHorizontal = 1;
  std::size_t mostVertical = 1;
  std::size_t samples = 0;
  for (unsigned i = 0; i < *components; ++i) {
    const auto identifier = segment.byte();
    const auto sampling = segment.byte();
    const auto table = segment.byte();
    if (!identifier || !sampling || !table) return false;
    const std::size_t horizontal = *sampling >> 4;
    const std::size_t vertical = *sampling & 0x0F;
    mostHorizontal = std::max(mostHorizontal, horizontal);
    mostVertical = std::max(mostVertical, vertical);
    samples += horizontal * vertical;
  }
  layout.components = *components;
  layout.coefficientBytes +=
      *width * *height * samples / (mostHorizontal * mostVertical) * kBytesACoefficient;
  return true;
}

bool readSegment(unsigned marker, Reader segment, JPEGLayout& layout) {
  constexpr unsigned kProgressive = 2;  // of the four kinds that each coding has
  if (isStartOfFrame(marker)) {
    layout.isProgressive = layout.isProgressive || (marker & 0x03U) == kProgressive;
    return readFrame(segment, layout);
  }
  if (marker != kStartOfScan) return true;
  const auto components = segment.byte();
  ++layout.scans;
  layout.hasPartialScan = layout.hasPartialScan || !components || *components < layout.components;
  return true;
}

// Reads segments and scans up to the end-of-image marker; one inside a segment (a thumbnail's) does not
// count. Nothing when the image ends before.
std::optional<JPEGLayout> readJPEG(std::string_view bytes) {
  constexpr unsigned kEndOfImage = 0xD9;
  JPEGLayout layout;
  Reader reader(bytes.substr(2));
  auto marker = nextMarker(reader);
  while (marker && *marker != kEndOfImage) {
    const auto length = reader.bigEndian(2);
    const Reader segment = reader;
    if (!length || *length < 2 || !reader.skip(*length - 2)) return std::nullopt;
    if (!readSegment(*marker, segment, layout)) return std::nullopt;
    marker = *marker == kStartOfScan ? markerAfterScan(reader) : nextMarker(reader);
  }
  return marker ? std::optional(layout) : std::nullopt;
}

bool skipColorTable(Reader& reader, unsigned flags) {
  const bool isPresent = (flags & 0x80U) != 0;
  return !isPresent || reader.skip(std::size_t{3} << ((flags & 0x07U) + 1));
}

// Length-prefixed blocks up to the empty one.
bool skipSubBlocks(Reader& reader) {
  for (;;) {
    const auto length = reader.byte();
    if (!length || !reader.skip(*length)) return false;
    if (*length == 0) return true;
  }
}

// Up to the end of the first frame's data.
bool isCompleteGIF(std::string_view bytes) {
  constexpr unsigned kExtension = 0x21;
  constexpr unsigned kImage = 0x2C;
  Reader reader(bytes);
  if (!reader.skip(10)) return false;
  auto flags = reader.byte();
  if (!flags || !reader.skip(2) || !skipColorTable(reader, *flags)) return false;
  auto block = reader.byte();
  while (block == kExtension) {
    if (!reader.skip(1) || !skipSubBlocks(reader)) return false;
    block = reader.byte();
  }
  if (block != kImage || !reader.skip(8)) return false;
  flags = reader.byte();
  return flags && skipColorTable(reader, *flags) && reader.skip(1) && skipSubBlocks(reader);
}

bool isCompleteWebP(std::string_view bytes) {
  const auto byteAt = [&](std::size_t i) { return std::size_t{static_cast<unsigned char>(bytes[i])}; };
  const std::size_t length = byteAt(4) | byteAt(5) << 8 | byteAt(6) << 16 | byteAt(7) << 24;
  return length + 8 <= bytes.size();
}

}  // namespace

ImageFormat imageFormatOf(std::string_view bytes) {
  if (bytes.starts_with(kPNGSignature)) return ImageFormat::png;
  if (bytes.starts_with(kJPEGSignature)) return ImageFormat::jpeg;
  if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a")) return ImageFormat::gif;
  if (bytes.size() >= 12 && bytes.starts_with("RIFF") && bytes.substr(8, 4) == "WEBP") {
    return ImageFormat::webp;
  }
  return ImageFormat::none;
}

bool isImageComplete(std::string_view bytes, ImageFormat format) {
  switch (format) {
    case ImageFormat::none:
      return false;
    case ImageFormat::png:
      return isCompletePNG(bytes);
    case ImageFormat::jpeg:
      return readJPEG(bytes).has_value();
    case ImageFormat::gif:
      return isCompleteGIF(bytes);
    case ImageFormat::webp:
      return isCompleteWebP(bytes);
  }
  return false;
}

bool isImageAffordable(std::string_view bytes, ImageFormat format) {
  constexpr std::size_t kMostCoefficientBytes = 48'000'000;
  constexpr std::size_t kMostScans = 64;
  if (format != ImageFormat::jpeg) return true;
  const auto layout = readJPEG(bytes);
  if (!layout) return false;
  const bool isKeptWhole = layout->isProgressive || layout->hasPartialScan;
  return layout->scans <= kMostScans && (!isKeptWhole || layout->coefficientBytes <= kMostCoefficientBytes);
}

}  // namespace QXPlatform
