#include "QXExtensionSDK/payload/Color.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

namespace QXExtensionSDK {

namespace {

constexpr std::size_t kDigitCount = 6;

bool isHexDigit(char character) {
  return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
         (character >= 'A' && character <= 'F');
}

}  // namespace

std::string Color::hexString() const {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text(kDigitCount, '0');
  for (std::size_t i = 0; i < kDigitCount; ++i)
    text[i] = kDigits[(rgb_ >> (4 * (kDigitCount - 1 - i))) & 0xFU];
  return text;
}

std::optional<Color> parseColor(std::string_view text, const Logger& logger) {
  if (text.size() != kDigitCount || !std::ranges::all_of(text, isHexDigit)) {
    logger.error(logger.generalCategory(), "Invalid color value=", text);
    return std::nullopt;
  }
  std::uint32_t rgb = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), rgb, 16).ec != std::errc()) {
    logger.error(logger.generalCategory(), "Unable to convert color for value=", text);
    return std::nullopt;
  }
  return Color(rgb);
}

}  // namespace QXExtensionSDK
