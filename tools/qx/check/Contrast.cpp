#include "tools/qx/check/Contrast.h"

#include <algorithm>
#include <cmath>

namespace qx {

namespace {

double linear(double component) {
  return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QXExtensionSDK::Color& color) {
  return 0.2126 * linear(color.red()) + 0.7152 * linear(color.green()) + 0.0722 * linear(color.blue());
}

}  // namespace

double contrast(const QXExtensionSDK::Color& one, const QXExtensionSDK::Color& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace qx
