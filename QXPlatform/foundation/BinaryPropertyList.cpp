#include "QXPlatform/foundation/BinaryPropertyList.h"

#include <cstdint>
#include <optional>

namespace QXPlatform {

namespace {

// The last 32 bytes say where everything is: the widths of offsets and references at 6 and 7, then three
// numbers of 8 bytes.
constexpr std::size_t kTrailerSize = 32;

class Outline {
 public:
  Outline(std::string_view bytes, const PropertyListLimits& limits) : bytes_(bytes), left_(limits) {}

  bool check() {
    if (bytes_.size() < kTrailerSize) return false;
    const std::size_t trailer = bytes_.size() - kTrailerSize;
    offsetWidth_ = *number(trailer + 6, 1);
    referenceWidth_ = *number(trailer + 7, 1);
    objectCount_ = *number(trailer + 8, 8);
    const std::uint64_t top = *number(trailer + 16, 8);
    tableStart_ = *number(trailer + 24, 8);
    return unfold(top, left_.depth);
  }

 private:
  struct Header {
    std::uint64_t count;
    std::uint64_t contentStart;
  };

  // Nothing outside the bytes.
  std::optional<std::uint64_t> number(std::uint64_t at, std::uint64_t width) const {
    if (width < 1 || width > 8 || at > bytes_.size() || width > bytes_.size() - at) return std::nullopt;
    std::uint64_t result = 0;
    for (std::uint64_t i = 0; i < width; ++i) {
      result = result << 8U | static_cast<unsigned char>(bytes_[static_cast<std::size_t>(at + i)]);
    }
    return result;
  }

  std::optional<std::uint64_t> offsetOf(std::uint64_t object) const {
    if (object >= objectCount_ || object > bytes_.size() || tableStart_ > bytes_.size()) return std::nullopt;
    return number(tableStart_ + object * offsetWidth_, offsetWidth_);
  }

  std::optional<Header> headerAt(std::uint64_t offset) const {
    const auto marker = number(offset, 1);
    if (!marker) return std::nullopt;
    Header header{*marker & 0xFU, offset + 1};
    if (header.count != 0xF) return header;
    // A larger count follows as an integer object.
    const auto width = number(offset + 1, 1);
    if (!width || *width >> 4U != 1 || (*width & 0xFU) > 3) return std::nullopt;
    const std::uint64_t countWidth = std::uint64_t{1} << (*width & 0xFU);
    const auto count = number(offset + 2, countWidth);
    if (!count) return std::nullopt;
    header.count = *count;
    header.contentStart = offset + 2 + countWidth;
    return header;
  }

  bool unfold(std::uint64_t object, int depthLeft) {
    if (left_.nodes == 0) return false;
    --left_.nodes;
    const auto offset = offsetOf(object);
    if (!offset) return false;
    const unsigned kind = static_cast<unsigned>(number(*offset, 1).value_or(0)) >> 4U;
    switch (kind) {
      case 0x4:
      case 0x5:
        return takeContent(*offset, 1);
      case 0x6:
        return takeContent(*offset, 2);
      case 0xA:
      case 0xC:
        return depthLeft > 0 && unfoldChildren(*offset, 1, depthLeft - 1);
      case 0xD:
        return depthLeft > 0 && unfoldChildren(*offset, 2, depthLeft - 1);
      default:
        return number(*offset, 1).has_value();
    }
  }

  bool takeContent(std::uint64_t offset, std::uint64_t unitWidth) {
    const auto header = headerAt(offset);
    if (!header || header->count > left_.bytes / unitWidth) return false;
    left_.bytes -= static_cast<std::size_t>(header->count * unitWidth);
    return true;
  }

  // Of a text that has been unfolded, so that its length is known to be bearable.
  bool holdsNUL(std::uint64_t object) const {
    const std::uint64_t offset = *offsetOf(object);
    const std::uint64_t kind = *number(offset, 1) >> 4U;
    if (kind != 0x5 && kind != 0x6) return false;
    const std::uint64_t width = kind == 0x5 ? 1 : 2;
    const auto header = headerAt(offset);
    for (std::uint64_t i = 0; i < header->count; ++i) {
      if (number(header->contentStart + i * width, width).value_or(0) == 0) return true;
    }
    return false;
  }

  bool unfoldChildren(std::uint64_t offset, std::uint64_t referencesPerEntry, int depthLeft) {
    const auto header = headerAt(offset);
    if (!header || header->count > left_.nodes) return false;
    for (std::uint64_t i = 0; i < header->count * referencesPerEntry; ++i) {
      const auto child = number(header->contentStart + i * referenceWidth_, referenceWidth_);
      if (!child || !unfold(*child, depthLeft)) return false;
      const bool isKey = referencesPerEntry == 2 && i < header->count;
      if (isKey && holdsNUL(*child)) return false;
    }
    return true;
  }

  const std::string_view bytes_;
  PropertyListLimits left_;
  std::uint64_t offsetWidth_ = 0;
  std::uint64_t referenceWidth_ = 0;
  std::uint64_t objectCount_ = 0;
  std::uint64_t tableStart_ = 0;
};

}  // namespace

bool unfoldsWithin(std::string_view binaryPropertyList, const PropertyListLimits& limits) {
  return Outline(binaryPropertyList, limits).check();
}

}  // namespace QXPlatform
