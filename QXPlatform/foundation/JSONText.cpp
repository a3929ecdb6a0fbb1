#include "QXPlatform/foundation/JSONText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/UTF8.h"

namespace QXPlatform {

namespace {

constexpr std::uint64_t kEveryByte = 0x0101010101010101U;
constexpr std::uint64_t kHighBits = kEveryByte * 0x80U;

constexpr std::uint64_t zeroBytes(std::uint64_t bytes) {
  return (bytes - kEveryByte) & ~bytes & kHighBits;
}

// High bits set for the bytes that cannot stand in a JSON string as they are: control characters, quotation
// marks, backslashes, and all that is not ASCII. The lowest bit set is always right; those above it may not
// be.
constexpr std::uint64_t specialBytes(std::uint64_t bytes) {
  return ((bytes - kEveryByte * 0x20U) & ~bytes & kHighBits) | zeroBytes(bytes ^ (kEveryByte * '"')) |
         zeroBytes(bytes ^ (kEveryByte * '\\')) | (bytes & kHighBits);
}

constexpr bool needsEscape(char character) {
  return static_cast<unsigned char>(character) < 0x20 || character == '"' || character == '\\';
}

constexpr bool isSpecial(char character) {
  return static_cast<unsigned char>(character) >= 0x80 || needsEscape(character);
}

// The place of the first special byte among the eight at `bytes`; eight when there is none.
std::size_t plainAmongEight(const char* bytes) {
  std::uint64_t eight;
  std::memcpy(&eight, bytes, sizeof eight);
  return static_cast<std::size_t>(std::countr_zero(specialBytes(eight))) / 8;
}

// How many characters at the front of `text` can be taken over as they are.
std::size_t plainPrefix(std::string_view text) {
  constexpr std::size_t kStep = sizeof(std::uint64_t);
  std::size_t length = 0;
  if (std::endian::native == std::endian::little && text.size() >= kStep) {
    for (; text.size() - length >= kStep; length += kStep) {
      const std::size_t plain = plainAmongEight(text.data() + length);
      if (plain < kStep) return length + plain;
    }
    // The rest together with some that are known to be plain.
    const std::size_t last = text.size() - kStep;
    return last + plainAmongEight(text.data() + last);
  }
  while (length < text.size() && !isSpecial(text[length])) ++length;
  return length;
}

void appendEscaped(std::string& out, char character) {
  switch (character) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '\b':
      out += "\\b";
      return;
    case '\f':
      out += "\\f";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    default:
      out += "\\u00";
      appendHexByte(out, static_cast<unsigned char>(character));
  }
}

// In one piece, as most texts are plain and short.
void appendQuoted(std::string& out, std::string_view text) {
  const std::size_t start = out.size();
  out.append(text.size() + 2, '"');
  if (!text.empty()) std::memcpy(out.data() + start + 1, text.data(), text.size());
}

}  // namespace

std::string JSONFault::description() const {
  return where.text().empty() ? std::string(reason) : where.text() + ": " + std::string(reason);
}

bool appendJSONText(std::string& out, std::string_view text, JSONFault& fault) {
  const std::size_t plain = plainPrefix(text);
  if (plain == text.size()) {
    appendQuoted(out, text);
    return true;
  }
  if (!isValidUTF8(text.substr(plain))) {
    fault.reason = "not UTF-8 text";
    return false;
  }
  out += '"';
  for (;;) {
    const auto* const escaped = std::ranges::find_if(text, needsEscape);
    out.append(text.begin(), escaped);
    if (escaped == text.end()) break;
    appendEscaped(out, *escaped);
    text.remove_prefix(static_cast<std::size_t>(escaped - text.begin()) + 1);
  }
  out += '"';
  return true;
}

bool appendJSONNumber(std::string& out, double number, JSONFault& fault) {
  if (!std::isfinite(number)) {
    fault.reason = "not a finite number";
    return false;
  }
  std::array<char, 32> buffer;
  const char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
  const std::string_view digits(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
  out += digits;
  // Without a mark of its own a whole number would be read back as an integer.
  if (digits.find_first_of(".e") == std::string_view::npos) out += ".0";
  return true;
}

void appendJSONInteger(std::string& out, std::int64_t integer) {
  std::array<char, 24> buffer;
  char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), integer).ptr;
  out.append(buffer.data(), end);
}

}  // namespace QXPlatform
