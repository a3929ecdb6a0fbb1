#pragma once

#include <cstddef>
#include <filesystem>

#include "QXPlatform/foundation/Result.h"
#include "tools/qx/carousel/PlayedCarousel.h"

namespace qx {

// Draws a panel of a carousel with its images loaded, as far as they can be. Answers how the carousel stood.
QXPlatform::Result<QXPlatform::Dictionary> drawPanel(PlayedCarousel& carousel, std::size_t panel,
                                                     const std::filesystem::path& file);

}  // namespace qx
