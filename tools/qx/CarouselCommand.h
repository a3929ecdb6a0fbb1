#pragma once

#include <optional>

#include "QXPlatform/foundation/Result.h"
#include "tools/qx/CarouselOptions.h"

namespace qx {

// Whether this build has what draws.
bool hasCarousel();

// Shows a push's carousel. What draws is a program of its own, so that the others need not load the view
// toolkit; this process becomes that program. Returns, with the exit code, only when it cannot.
int runCarousel(const SimulatorOptions& simulator, const CarouselOptions& options);

// The same beside this process, without the report, until it has ended. An error says why it did not end
// well.
std::optional<QXPlatform::Error> drawCarousel(const SimulatorOptions& simulator,
                                              const CarouselOptions& options);

}  // namespace qx
