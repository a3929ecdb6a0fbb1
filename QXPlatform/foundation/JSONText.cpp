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

// What follows the backslash: a letter, 'u' for the character's number; zero for what needs no backslash.
constexpr std::array<char, 256> kEscapes = [] {
  std::array<char, 256> escapes{};
  for (std::size_t control = 0; control < 0x20; ++control) escapes[control] = 'u';
  escapes['\b'] = 'b';
  escapes['\f'] = 'f';
  escapes['\n'] = 'n';
  escapes['\r'] = 'r';
  escapes['\t'] = 't';
  escapes['"'] = '"';
  escapes['\\'] = '\\';
  return escapes;
}();

constexpr bool isSpecial(char character) {
  const auto number = static_cast<unsigned char>(character);
  return number >= 0x80 || kEscapes[number] != 0;
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

constexpr std::ptrdiff_t kLongestEscape = 6;

// Where the next character goes.
char* writeEscaped(char* place, char character) {
  const auto number = static_cast<unsigned char>(character);
  const char escape = kEscapes[number];
  if (escape == 0) {
    *place++ = character;
    return place;
  }
  *place++ = '\\';
  *place++ = escape;
  if (escape != 'u') return place;
  const std::array<char, 4> digits{'0', '0', kHexDigits[number >> 4U], kHexDigits[number & 0xFU]};
  return std::ranges::copy(digits, place).out;
}

// Piece by piece: a string that grows by single characters is slow.
void appendEscaped(std::string& out, std::string_view text) {
  std::array<char, 256> piece;
  char* const begin = piece.data();
  char* end = begin;
  for (const char character : text) {
    if (begin + piece.size() - end < kLongestEscape) {
      out.append(begin, end);
      end = begin;
    }
    end = writeEscaped(end, character);
  }
  out.append(begin, end);
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
  appendEscaped(out, text);
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
  const auto isMark = [](char character) { return character == '.' || character == 'e'; };
  if (std::ranges::none_of(digits, isMark)) out += ".0";
  return true;
}

void appendJSONInteger(std::string& out, std::int64_t integer) {
  std::array<char, 24> buffer;
  char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), integer).ptr;
  out.append(buffer.data(), end);
}

}  // namespace QXPlatform
