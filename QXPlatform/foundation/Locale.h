#pragma once

#include <string>

namespace QXPlatform {

struct Locale {
  // Of the form en_US, from LC_ALL, LC_MESSAGES or LANG; en_US_POSIX for "C", "POSIX" or nothing set. Read
  // afresh at each call.
  static std::string currentIdentifier();
};

}  // namespace QXPlatform
