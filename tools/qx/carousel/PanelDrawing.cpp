#include "tools/qx/carousel/PanelDrawing.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

std::size_t position(const Dictionary& state) {
  return static_cast<std::size_t>(state["currentPanelIndex"].integer().value_or(0));
}

bool isLoading(const Dictionary& state) {
  return std::ranges::any_of(state["panels"].elements(),
                             [](const auto& panel) { return panel["imageState"].string() == "downloading"; });
}

Result<Dictionary> goTo(PlayedCarousel& carousel, std::size_t panel) {
  auto state = carousel.play({{"step", "look"}});
  while (state && position(*state) != panel) {
    const std::size_t before = position(*state);
    state = carousel.play({{"step", before < panel ? "next" : "back"}});
    if (state && position(*state) == before)
      return Error{"panel " + std::to_string(panel) + " cannot be reached"};
  }
  return state;
}

}  // namespace

// The carousel's own timer may move it on at any time, until it rests on the last panel; a failed image is
// tried again when the carousel comes back to it.
Result<Dictionary> drawPanel(PlayedCarousel& carousel, std::size_t panel, const std::filesystem::path& file) {
  constexpr int kMostTries = 200;
  for (int i = 0;; ++i) {
    if (const auto there = goTo(carousel, panel); !there) return there.error();
    if (const auto loaded = carousel.play({{"step", "wait"}}); !loaded) return loaded.error();
    if (const auto back = goTo(carousel, panel); !back) return back.error();
    auto drawn = carousel.play({{"step", "draw"}, {"file", file.string()}});
    if (!drawn || (position(*drawn) == panel && !isLoading(*drawn)) || i == kMostTries) return drawn;
  }
}

}  // namespace qx
