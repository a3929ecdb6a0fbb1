#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "QXPlatform/images/Bitmap.h"

namespace QXPlatform {

// The rows of colour numbers, a byte each, that a bmp's run lengths stand for; places that they leap over
// have number 0. `bitsAPixel` is 4 or 8. Nothing when they end before the picture does.
std::optional<std::vector<std::uint8_t>> unpackRunLengths(std::string_view bytes, PixelSize size,
                                                          unsigned bitsAPixel);

}  // namespace QXPlatform
