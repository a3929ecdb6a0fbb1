#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

// Pixels a point, where neither an option nor a screen says so.
constexpr double kDrawingScale = 2;
// Of a picture, from left to right.
constexpr int kMostPixelsAcross = 16'384;

struct CarouselOptions {
  std::string file;                          // "-" is standard input
  std::optional<std::filesystem::path> png;  // draws instead of opening a window
  std::optional<int> panel;                  // from 0; with png
  bool all = false;                          // every panel; with png
  int width = 360;                           // points
  std::optional<double> scale;               // absent: kDrawingScale for a drawing, the screen's for a window
  bool dark = false;
  bool rtl = false;
  std::optional<std::string> steps;  // "next,back,wait:500"
};

// What the simulator's own program hands to the one that draws.
struct CarouselInvocation {
  SimulatorOptions simulator;
  CarouselOptions carousel;
};

// As the single argument of that program, and back.
std::string encodeInvocation(const CarouselInvocation& invocation);
QXPlatform::Result<CarouselInvocation> decodeInvocation(std::string_view argument);

}  // namespace qx
