#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/foundation/Result.h"

namespace qx {

enum class CarouselStepKind : std::uint8_t { next, back, tick, tap, refresh, wait };
constexpr auto rawValues(QXPlatform::RawValuesOf<CarouselStepKind>) {
  using enum CarouselStepKind;
  return std::to_array<QXPlatform::RawCase<CarouselStepKind>>(
      {{next, "next"}, {back, "back"}, {tick, "tick"}, {tap, "tap"}, {refresh, "refresh"}, {wait, "wait"}});
}

// Something that happens to a carousel.
struct CarouselStep {
  using Kind = CarouselStepKind;

  Kind kind;
  std::string file = {};              // to refresh from
  std::chrono::milliseconds time{0};  // to wait

  std::string_view name() const { return QXPlatform::rawValue(kind); }
};

// Reads "next,back,tick,tap,refresh:FILE,wait:MS", in any order and number.
QXPlatform::Result<std::vector<CarouselStep>> parseCarouselSteps(std::string_view text);

}  // namespace qx
