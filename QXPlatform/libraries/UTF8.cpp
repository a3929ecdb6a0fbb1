#include "QXPlatform/foundation/UTF8.h"

#include <utf8.h>

#include <cstdint>
#include <cstring>
#include <iterator>

namespace QXPlatform {

namespace {

// Payloads are ASCII for the most part: eight characters at a time while they are.
std::size_t asciiLength(std::string_view text) {
  std::size_t length = 0;
  std::uint64_t word = 0;
  for (; text.size() - length >= sizeof word; length += sizeof word) {
    std::memcpy(&word, text.data() + length, sizeof word);
    if ((word & 0x8080808080808080U) != 0) break;
  }
  return length;
}

}  // namespace

bool isValidUTF8(std::string_view text) {
  text.remove_prefix(asciiLength(text));
  return utf8::is_valid(text.begin(), text.end());
}

std::string replacingInvalidUTF8(std::string_view text) {
  std::string replaced;
  replaced.reserve(text.size());
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(replaced));
  return replaced;
}

}  // namespace QXPlatform
