#pragma once

#include <string_view>

#include "QXPlatform/images/Bitmap.h"

namespace QXPlatform {

// What makes a picture upright: first its axes are swapped, then it is flipped.
struct Orientation {
  bool swapsAxes = false;
  bool flipsHorizontally = false;
  bool flipsVertically = false;

  friend bool operator==(Orientation, Orientation) = default;
};

// From an Exif block that begins with its byte order; upright when it says nothing readable.
Orientation orientationOfExif(std::string_view exif);

Bitmap upright(Bitmap bitmap, Orientation orientation);

}  // namespace QXPlatform
