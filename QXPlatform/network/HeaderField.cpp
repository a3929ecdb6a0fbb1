#include "QXPlatform/network/HeaderField.h"

#include <algorithm>

#include "QXPlatform/foundation/ASCII.h"

namespace QXPlatform {
namespace {

bool isTokenCharacter(char c) {
  return isASCIIAlphanumeric(c) ||
         (c != '\0' && std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos);
}

}  // namespace

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
