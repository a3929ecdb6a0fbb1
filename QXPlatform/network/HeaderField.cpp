#include "QXPlatform/network/HeaderField.h"

#include <algorithm>

namespace QXPlatform {
namespace {

char lowered(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isTokenCharacter(char c) {
  const char letter = lowered(c);
  return (letter >= 'a' && letter <= 'z') || (c >= '0' && c <= '9') ||
         (c != '\0' && std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos);
}

}  // namespace

bool sameHeaderName(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return lowered(a) == lowered(b); });
}

bool isHeaderName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), isTokenCharacter);
}

std::string_view trimmedHeaderValue(std::string_view value) {
  constexpr std::string_view kSpace = " \t\r\n";
  const auto first = value.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return value.substr(first, value.find_last_not_of(kSpace) - first + 1);
}

}  // namespace QXPlatform
