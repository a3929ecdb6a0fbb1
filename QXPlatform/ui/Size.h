#pragma once

namespace QXPlatform {

// In points: one point is as many pixels as the screen's scale says.
struct Size {
  double width = 0;
  double height = 0;

  friend bool operator==(const Size&, const Size&) = default;
};

}  // namespace QXPlatform
