#include "QXPlatform/foundation/Markup.h"

namespace QXPlatform {

namespace {

std::string_view entityOf(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return {};
  }
}

}  // namespace

std::string escapedMarkup(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char character : text) {
    const std::string_view entity = entityOf(character);
    if (entity.empty()) {
      result += character;
    } else {
      result += entity;
    }
  }
  return result;
}

}  // namespace QXPlatform
