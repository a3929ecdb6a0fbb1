#include "QXPlatform/foundation/UTF8.h"

#include <utf8.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace QXPlatform {

namespace {

// Payloads are ASCII for the most part: so many words at a time while they are.
template <std::size_t count>
std::size_t asciiLength(std::string_view text) {
  std::array<std::uint64_t, count> words;
  std::size_t length = 0;
  for (; text.size() - length >= sizeof words; length += sizeof words) {
    std::memcpy(words.data(), text.data() + length, sizeof words);
    std::uint64_t all = 0;
    for (const std::uint64_t word : words) all |= word;
    if ((all & 0x8080808080808080U) != 0) break;
  }
  return length;
}

}  // namespace

bool isValidUTF8(std::string_view text) {
  text.remove_prefix(asciiLength<4>(text));
  text.remove_prefix(asciiLength<1>(text));
  return utf8::is_valid(text.begin(), text.end());
}

std::string replacingInvalidUTF8(std::string_view text) {
  std::string replaced;
  replaced.reserve(text.size());
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(replaced));
  return replaced;
}

}  // namespace QXPlatform
