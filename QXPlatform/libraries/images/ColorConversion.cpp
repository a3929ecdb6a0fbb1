#include "QXPlatform/images/ColorConversion.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace QXPlatform {

namespace {

struct CloseProfile {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::unique_ptr<void, DeleteTransform>;

constexpr double kStandardGamma = 2.2;
// Of a pixel only the first value, by which it is grey.
constexpr cmsUInt32Number kGrayInBGRA = COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | EXTRA_SH(3) | BYTES_SH(1);
constexpr cmsUInt32Number kInvertedYMCK = TYPE_CMYK_8_REV | DOSWAP_SH(1) | SWAPFIRST_SH(1);

cmsToneCurve* makeCurve(const std::optional<double>& gamma) {
  if (gamma) return cmsBuildGamma(nullptr, *gamma);
  constexpr std::array<cmsFloat64Number, 5> kSRGBCurve{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
  return cmsBuildParametricToneCurve(nullptr, 4, kSRGBCurve.data());
}

Profile makeProfile(const Chromaticities& points, const std::optional<double>& gamma) {
  cmsToneCurve* curve = makeCurve(gamma);
  if (curve == nullptr) return nullptr;
  const std::array<cmsToneCurve*, 3> curves{curve, curve, curve};
  const cmsCIExyY white{points.white.x, points.white.y, 1};
  const cmsCIExyYTRIPLE primaries{{points.red.x, points.red.y, 1},
                                  {points.green.x, points.green.y, 1},
                                  {points.blue.x, points.blue.y, 1}};
  Profile profile(cmsCreateRGBProfile(&white, &primaries, curves.data()));
  cmsFreeToneCurve(curve);
  return profile;
}

// Null for what is sRGB already, as far as anyone can tell.
Profile profileOf(const ColorDescription& color) {
  if (!color.iccProfile.empty()) {
    const auto length = static_cast<cmsUInt32Number>(color.iccProfile.size());
    if (Profile profile{cmsOpenProfileFromMem(color.iccProfile.data(), length)}) return profile;
  }
  // Many writers give sRGB's curve as this, rounded.
  const bool isStandardGamma = !color.gamma || std::abs(*color.gamma - kStandardGamma) < 0.01;
  if (!color.chromaticities && isStandardGamma) return nullptr;
  return makeProfile(color.chromaticities.value_or(Chromaticities()),
                     isStandardGamma ? std::nullopt : color.gamma);
}

// Nothing when the profile is for other pixels than these.
std::optional<cmsUInt32Number> pixelFormat(const Profile& profile, ColorDescription::Model model) {
  const bool hasInks = model == ColorDescription::Model::invertedCMYK;
  switch (cmsGetColorSpace(profile.get())) {
    case cmsSigRgbData:
      return hasInks ? std::nullopt : std::optional<cmsUInt32Number>(TYPE_BGRA_8);
    case cmsSigGrayData:
      return hasInks ? std::nullopt : std::optional(kGrayInBGRA);
    case cmsSigCmykData:
      return hasInks ? std::optional<cmsUInt32Number>(kInvertedYMCK) : std::nullopt;
    default:
      return std::nullopt;
  }
}

Transform makeTransform(const ColorDescription& color) {
  const Profile from = profileOf(color);
  const auto format = from == nullptr ? std::nullopt : pixelFormat(from, color.model);
  if (!format) return nullptr;
  const Profile to(cmsCreate_sRGBProfile());
  return Transform(cmsCreateTransform(from.get(), *format, to.get(), TYPE_BGRA_8, INTENT_PERCEPTUAL, 0));
}

template <typename Change>
void changePixels(Bitmap& bitmap, Change change) {
  constexpr std::size_t kChannels = 4;
  for (std::size_t i = 0; i < bitmap.pixels.size(); i += kChannels) {
    change(std::span<std::uint8_t, kChannels>(bitmap.pixels.data() + i, kChannels));
  }
}

void applyProfile(Bitmap& bitmap, void* transform) {
  const auto count = bitmap.pixels.size() / 4;
  std::vector<std::uint8_t> alpha;
  alpha.reserve(count);
  changePixels(bitmap, [&alpha](auto pixel) {
    alpha.push_back(pixel[3]);
    for (std::size_t i = 0; i < 3 && pixel[3] != 0; ++i) {
      pixel[i] = static_cast<std::uint8_t>(std::min(0xFF, (pixel[i] * 0xFF + pixel[3] / 2) / pixel[3]));
    }
  });
  cmsDoTransform(transform, bitmap.pixels.data(), bitmap.pixels.data(), static_cast<cmsUInt32Number>(count));
  changePixels(bitmap, [next = alpha.begin()](auto pixel) mutable {
    pixel[3] = *next++;
    for (std::size_t i = 0; i < 3; ++i)
      pixel[i] = static_cast<std::uint8_t>((pixel[i] * pixel[3] + 127) / 0xFF);
  });
}

void applyInks(Bitmap& bitmap, void* transform) {
  if (transform != nullptr) {
    cmsDoTransform(transform, bitmap.pixels.data(), bitmap.pixels.data(),
                   static_cast<cmsUInt32Number>(bitmap.pixels.size() / 4));
  }
  changePixels(bitmap, [transform](auto pixel) {
    for (std::size_t i = 0; i < 3 && transform == nullptr; ++i) {
      pixel[i] = static_cast<std::uint8_t>(pixel[i] * pixel[3] / 0xFF);
    }
    pixel[3] = 0xFF;
  });
}

}  // namespace

void convertToSRGB(Bitmap& bitmap, const ColorDescription& color) {
  const Transform transform = makeTransform(color);
  if (color.model == ColorDescription::Model::invertedCMYK) return applyInks(bitmap, transform.get());
  if (transform != nullptr) applyProfile(bitmap, transform.get());
}

}  // namespace QXPlatform
