#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/Result.h"

namespace qx {

// Something that happens to a carousel.
struct CarouselStep {
  enum class Kind : std::uint8_t { next, back, tick, tap, refresh, wait };

  Kind kind;
  std::string file = {};              // to refresh from
  std::chrono::milliseconds time{0};  // to wait

  // "next", "refresh", ...
  std::string_view name() const;
};

// Reads "next,back,tick,tap,refresh:FILE,wait:MS", in any order and number.
QXPlatform::Result<std::vector<CarouselStep>> parseCarouselSteps(std::string_view text);

}  // namespace qx
