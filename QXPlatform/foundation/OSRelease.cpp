#include "QXPlatform/foundation/OSRelease.h"

#include <algorithm>

namespace QXPlatform {

namespace {

std::string unquoted(std::string_view assigned) {
  std::string value;
  char quote = '\0';
  for (std::size_t i = 0; i < assigned.size(); ++i) {
    const char character = assigned[i];
    if (character == quote) {
      quote = '\0';
    } else if (quote == '\0' && (character == '"' || character == '\'')) {
      quote = character;
    } else if (character == '\\' && quote != '\'' && i + 1 < assigned.size()) {
      value += assigned[++i];
    } else {
      value += character;
    }
  }
  return value;
}

std::string_view trimmed(std::string_view line) {
  constexpr std::string_view kWhiteSpace = " \t\r";
  const std::size_t first = line.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) return {};
  return line.substr(first, line.find_last_not_of(kWhiteSpace) + 1 - first);
}

}  // namespace

std::optional<std::string> osReleaseValue(std::string_view text, std::string_view name) {
  std::string value;
  while (!text.empty()) {
    const std::string_view whole = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(whole.size() + 1, text.size()));
    const std::string_view line = trimmed(whole);
    if (line.starts_with(name) && line.substr(name.size()).starts_with('=')) {
      value = unquoted(line.substr(name.size() + 1));
    }
  }
  if (value.empty()) return std::nullopt;
  return value;
}

}  // namespace QXPlatform
