#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "QXPlatform/foundation/UTF8.h"

// Which text stands in a JSON string as it is, for those who write JSON.

namespace QXPlatform::detail {

inline constexpr std::uint64_t kEveryByte = 0x0101010101010101U;
inline constexpr std::uint64_t kHighBits = kEveryByte * 0x80U;

// Has high bits set when one of the bytes needs a backslash: control characters, quotation marks,
// backslashes.
constexpr std::uint64_t escapedBytes(std::uint64_t bytes) {
  const std::uint64_t isControl = bytes - kEveryByte * 0x20U;
  const std::uint64_t isQuote = (bytes ^ (kEveryByte * '"')) - kEveryByte;
  const std::uint64_t isBackslash = (bytes ^ (kEveryByte * '\\')) - kEveryByte;
  return (isControl | isQuote | isBackslash) & ~bytes & kHighBits;
}

// Copies a text while it looks at it, which for a short one takes less than to call for either.
class PlainCopy {
 public:
  // Returns whether all of `text` stands in a JSON string as it is; if not, what is at `place` is of no use.
  static bool make(char* place, std::string_view text) {
    PlainCopy copy(place, text);
    return copy.takeAll() && ((copy.all_ & kHighBits) == 0 || isValidUTF8(text));
  }

 private:
  PlainCopy(char* place, std::string_view text) : place_(place), text_(text) {}

  bool takeAll() {
    using Step = std::uint64_t;
    if (text_.size() < sizeof(Step)) return takeFew();
    for (std::size_t at = 0; at + sizeof(Step) < text_.size(); at += sizeof(Step)) {
      if (!isPlain(copy<Step>(at), sizeof(Step))) return false;
    }
    return isPlain(copy<Step>(text_.size() - sizeof(Step)), sizeof(Step));
  }

  bool takeFew() {
    if (text_.size() >= sizeof(std::uint32_t)) return takeBothEnds<std::uint32_t>();
    if (text_.size() >= sizeof(std::uint16_t)) return takeBothEnds<std::uint16_t>();
    return text_.empty() || isPlain(copy<std::uint8_t>(0), 1);
  }

  // Which may have some characters in common.
  template <typename Half>
  bool takeBothEnds() {
    const std::uint64_t front = copy<Half>(0);
    const std::uint64_t back = copy<Half>(text_.size() - sizeof(Half));
    return isPlain(front | back << (8 * sizeof(Half)), 2 * sizeof(Half));
  }

  template <typename Word>
  std::uint64_t copy(std::size_t at) {
    Word word;
    std::memcpy(&word, text_.data() + at, sizeof word);
    std::memcpy(place_ + at, &word, sizeof word);
    return word;
  }

  // Whether none of the first so many needs a backslash.
  bool isPlain(std::uint64_t bytes, std::size_t count) {
    all_ |= bytes;
    const std::uint64_t others = count < sizeof bytes ? ~std::uint64_t{0} << (8 * count) : 0;
    return escapedBytes(bytes | others) == 0;
  }

  char* const place_;
  const std::string_view text_;
  std::uint64_t all_ = 0;
};

}  // namespace QXPlatform::detail
