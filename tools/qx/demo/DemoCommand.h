#pragma once

#include "tools/qx/SimulatorOptions.h"

namespace qx {

// Shows everything at once on a container and a back end of its own, and leaves what it made in ./qx-demo/.
// Returns the exit code: 0 only if every step held.
int runDemo(const SimulatorOptions& simulator);

}  // namespace qx
