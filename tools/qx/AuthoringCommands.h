#pragma once

#include "tools/qx/EachPush.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

// For those who write pushes. Each prints its results and returns the exit code.

// The push with its rich features compressed, and the way back.
int runPack(const SimulatorOptions& simulator, const PushInput& input);
int runUnpack(const SimulatorOptions& simulator, const PushInput& input);

}  // namespace qx
