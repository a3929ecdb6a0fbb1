#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "QXPlatform/images/Bitmap.h"

namespace QXPlatform {

// x and y of the white point and the three primaries.
struct Chromaticities {
  struct Point {
    double x;
    double y;
  };
  Point white{0.3127, 0.3290};
  Point red{0.64, 0.33};
  Point green{0.30, 0.60};
  Point blue{0.15, 0.06};
};

// What an image says of its colours.
struct ColorDescription {
  enum class Model : std::uint8_t { rgb, invertedCMYK };

  Model model = Model::rgb;
  // Whether there is no alpha to look at.
  bool isOpaque = false;
  // Wins over the rest.
  std::string iccProfile;
  std::optional<Chromaticities> chromaticities;
  // The exponent that makes a value light, such as 2.2; nothing for the curve of sRGB.
  std::optional<double> gamma;
};

// Brings pixels that are as described, with alpha unless they are CMYK, to sRGB. Inks stand in the order
// yellow, magenta, cyan and black. A profile that is none, or one for another model, is ignored.
void convertToSRGB(Bitmap& bitmap, const ColorDescription& color);

}  // namespace QXPlatform
