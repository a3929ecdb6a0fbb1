#include "QXExtensionSDK/payload/Color.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

#include "QXPlatform/foundation/ASCII.h"

namespace QXExtensionSDK {

namespace {

constexpr std::size_t kDigitCount = 6;

}  // namespace

std::string Color::hexString() const {
  std::string text;
  for (const unsigned shift : {16U, 8U, 0U}) {
    QXPlatform::appendHexByte(text, static_cast<unsigned char>(rgb_ >> shift),
                              QXPlatform::kUppercaseHexDigits);
  }
  return text;
}

std::optional<Color> parseColor(std::string_view text, const Logger& logger) {
  if (text.size() != kDigitCount || !std::ranges::all_of(text, QXPlatform::isHexDigit)) {
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
