#pragma once

#include <cstdint>
#include <memory_resource>
#include <vector>

namespace QXPlatform {

// In pixels.
struct PixelSize {
  int width = 0;
  int height = 0;

  bool empty() const { return width <= 0 || height <= 0; }
  PixelSize transposed() const { return {height, width}; }

  friend bool operator==(PixelSize, PixelSize) = default;
};

// Pixels row by row from the top, four bytes each: blue, green, red, alpha, in sRGB, the colours multiplied
// by alpha.
struct Bitmap {
  PixelSize size;
  std::pmr::vector<std::uint8_t> pixels;
  bool isOpaque = false;
};

}  // namespace QXPlatform
