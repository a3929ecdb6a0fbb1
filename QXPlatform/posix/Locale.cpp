#include "QXPlatform/foundation/Locale.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "QXPlatform/foundation/ASCII.h"

namespace QXPlatform {

namespace {

// The first that is set decides, even when it names no locale.
std::string_view localeSetting() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* setting = std::getenv(name);
    if (setting != nullptr && *setting != '\0') return setting;
  }
  return {};
}

bool isIdentifierCharacter(char character) {
  return isASCIIAlphanumeric(character) || character == '_' || character == '-';
}

}  // namespace

std::string Locale::currentIdentifier() {
  const std::string_view setting = localeSetting();
  // What follows names the character encoding and a variant.
  const std::string_view identifier = setting.substr(0, setting.find_first_of(".@"));
  const bool named = !identifier.empty() && identifier != "C" && identifier != "POSIX" &&
                     std::ranges::all_of(identifier, isIdentifierCharacter);
  return named ? std::string(identifier) : "en_US_POSIX";
}

}  // namespace QXPlatform
