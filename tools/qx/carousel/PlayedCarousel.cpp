#include "tools/qx/carousel/PlayedCarousel.h"

#include <utility>

#include "tools/qx/carousel/BuiltInCarousel.h"
#include "tools/qx/carousel/ProgramCarousel.h"

namespace qx {

QXPlatform::Result<std::unique_ptr<PlayedCarousel>> makeCarousel(const CarouselInvocation& invocation,
                                                                 CarouselPlace place,
                                                                 PlayedCarousel::StepHandler stepTaken) {
  const CarouselOptions& options = invocation.carousel;
  if (!options.extension) {
    return std::unique_ptr<PlayedCarousel>(
        std::make_unique<BuiltInCarousel>(invocation.simulator.logLevel, place.width, std::move(stepTaken)));
  }
  auto program = std::make_unique<ProgramCarousel>(std::move(stepTaken));
  if (auto problem = program->start(*options.extension, place)) return *std::move(problem);
  return std::unique_ptr<PlayedCarousel>(std::move(program));
}

}  // namespace qx
