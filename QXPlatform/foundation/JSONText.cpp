#include "QXPlatform/foundation/JSONText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/JSONPlainText.h"
#include "QXPlatform/foundation/UTF8.h"

namespace QXPlatform {

namespace {

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

// As most texts are. If not, nothing has been appended.
bool appendPlain(std::string& out, std::string_view text) {
  const std::size_t start = out.size();
  out.append(text.size() + 2, '"');
  if (detail::PlainCopy::make(out.data() + start + 1, text)) return true;
  out.resize(start);
  return false;
}

}  // namespace

std::string JSONFault::description() const {
  return where.text().empty() ? std::string(reason) : where.text() + ": " + std::string(reason);
}

bool appendJSONText(std::string& out, std::string_view text, JSONFault& fault) {
  if (appendPlain(out, text)) return true;
  if (!isValidUTF8(text)) {
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
