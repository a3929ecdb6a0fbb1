#include "AppGroupSDK/store/Trimming.h"

#include <algorithm>
#include <array>

namespace AppGroupSDK {

namespace {

using namespace std::string_view_literals;

// The space separators, the tab and the line breaks.
constexpr std::array kBlanks{
    " "sv,
    "\t"sv,
    "\n"sv,
    "\v"sv,
    "\f"sv,
    "\r"sv,
    "\xC2\x85"sv,      // next line
    "\xC2\xA0"sv,      // no-break space
    "\xE1\x9A\x80"sv,  // ogham space mark
    "\xE2\x80\x80"sv,  // the spaces of fixed width
    "\xE2\x80\x81"sv,
    "\xE2\x80\x82"sv,
    "\xE2\x80\x83"sv,
    "\xE2\x80\x84"sv,
    "\xE2\x80\x85"sv,
    "\xE2\x80\x86"sv,
    "\xE2\x80\x87"sv,
    "\xE2\x80\x88"sv,
    "\xE2\x80\x89"sv,
    "\xE2\x80\x8A"sv,
    "\xE2\x80\xA8"sv,  // line separator
    "\xE2\x80\xA9"sv,  // paragraph separator
    "\xE2\x80\xAF"sv,  // narrow no-break space
    "\xE2\x81\x9F"sv,  // mathematical space
    "\xE3\x80\x80"sv,  // ideographic space
};

// No blank begins or ends with one of these, as most texts do.
bool isVisibleASCII(char character) {
  return character > ' ' && character <= '~';
}

}  // namespace

std::string_view trimmingWhitespaceAndNewlines(std::string_view text) {
  if (!text.empty() && isVisibleASCII(text.front()) && isVisibleASCII(text.back())) return text;
  const auto remove = [&](auto isAtEnd, auto removeEnd) {
    while (true) {
      const auto blank = std::find_if(kBlanks.begin(), kBlanks.end(), isAtEnd);
      if (blank == kBlanks.end()) return;
      removeEnd(blank->size());
    }
  };
  remove([&](std::string_view blank) { return text.starts_with(blank); },
         [&](std::size_t size) { text.remove_prefix(size); });
  remove([&](std::string_view blank) { return text.ends_with(blank); },
         [&](std::size_t size) { text.remove_suffix(size); });
  return text;
}

}  // namespace AppGroupSDK
