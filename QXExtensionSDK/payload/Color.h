#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

// An opaque colour. A plain value.
class Color {
 public:
  // From 0xRRGGBB.
  constexpr explicit Color(std::uint32_t rgb) : rgb_(rgb & 0xFFFFFFU) {}

  // Each from 0 to 1.
  constexpr double red() const { return component(16); }
  constexpr double green() const { return component(8); }
  constexpr double blue() const { return component(0); }
  constexpr double alpha() const { return 1.0; }

  // Six digits in upper case, such as "E5E5E5".
  std::string hexString() const;

  friend bool operator==(const Color&, const Color&) = default;

 private:
  constexpr double component(unsigned shift) const { return ((rgb_ >> shift) & 0xFFU) / 255.0; }

  std::uint32_t rgb_;
};

inline constexpr Color kWhite{0xFFFFFF};
inline constexpr Color kBlack{0x000000};

// A payload's colour: exactly six hexadecimal digits, RRGGBB, in either case. Anything else is no colour and
// logged as an error. Any thread.
std::optional<Color> parseColor(std::string_view text, const Logger& logger);

}  // namespace QXExtensionSDK
