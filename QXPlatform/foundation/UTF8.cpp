#include "QXPlatform/foundation/UTF8.h"

#include <cstdint>
#include <cstring>

namespace QXPlatform {

namespace {

// What may follow a lead byte: how many bytes, and the bounds of the first of them, which are what keeps
// overlong forms, surrogates and too large code points out.
struct Lead {
  std::size_t length;
  unsigned char lowest;
  unsigned char highest;
};

constexpr Lead classify(unsigned char lead) {
  if (lead < 0xC2) return {0, 0, 0};
  if (lead < 0xE0) return {2, 0x80, 0xBF};
  if (lead == 0xE0) return {3, 0xA0, 0xBF};
  if (lead == 0xED) return {3, 0x80, 0x9F};
  if (lead < 0xF0) return {3, 0x80, 0xBF};
  if (lead == 0xF0) return {4, 0x90, 0xBF};
  if (lead < 0xF4) return {4, 0x80, 0xBF};
  if (lead == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

}  // namespace

std::size_t leadingUTF8Length(std::string_view text) {
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (at(0) < 0x80) return 1;
  const Lead lead = classify(at(0));
  if (lead.length == 0 || text.size() < lead.length) return 0;
  if (at(1) < lead.lowest || at(1) > lead.highest) return 0;
  for (std::size_t i = 2; i < lead.length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return 0;
  }
  return lead.length;
}

bool isValidUTF8(std::string_view text) {
  while (!text.empty()) {
    // Payloads are ASCII for the most part: eight characters at a time while they are.
    std::uint64_t word = 0;
    if (text.size() >= sizeof word) {
      std::memcpy(&word, text.data(), sizeof word);
      if ((word & 0x8080808080808080U) == 0) {
        text.remove_prefix(sizeof word);
        continue;
      }
    }
    const std::size_t length = leadingUTF8Length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace QXPlatform
