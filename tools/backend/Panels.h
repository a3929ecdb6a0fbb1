#pragma once

#include <span>
#include <string_view>

namespace backend {

// A PNG image of 720 x 405 pixels, fit for a carousel's panel.
struct Panel {
  std::string_view name;  // "sunrise.png"
  std::string_view bytes;
};

// The images that come with the back end. They live as long as the process.
std::span<const Panel> panels();

}  // namespace backend
