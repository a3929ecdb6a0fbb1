#pragma once

#include <algorithm>
#include <string>
#include <string_view>

// Letters and digits of ASCII, whatever the locale. Any thread.

namespace QXPlatform {

constexpr char lowercased(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

constexpr char uppercased(char character) {
  return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

constexpr bool isASCIIDigit(char character) {
  return character >= '0' && character <= '9';
}

constexpr bool isASCIIAlphanumeric(char character) {
  return isASCIIDigit(character) || (lowercased(character) >= 'a' && lowercased(character) <= 'z');
}

constexpr bool isHexDigit(char character) {
  return isASCIIDigit(character) || (lowercased(character) >= 'a' && lowercased(character) <= 'f');
}

inline std::string lowercased(std::string_view text) {
  std::string result(text);
  for (char& character : result) character = lowercased(character);
  return result;
}

inline std::string uppercased(std::string_view text) {
  std::string result(text);
  for (char& character : result) character = uppercased(character);
  return result;
}

constexpr bool equalsIgnoringCase(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right,
                            [](char one, char other) { return lowercased(one) == lowercased(other); });
}

inline constexpr std::string_view kHexDigits = "0123456789abcdef";
inline constexpr std::string_view kUppercaseHexDigits = "0123456789ABCDEF";

// Two digits.
inline void appendHexByte(std::string& out, unsigned char byte, std::string_view digits = kHexDigits) {
  out += digits[byte >> 4U];
  out += digits[byte & 0xFU];
}

}  // namespace QXPlatform
