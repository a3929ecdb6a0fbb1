#pragma once

#include <string>

#include "tools/qx/SimulatorOptions.h"

namespace qx {

// For those who write pushes. Each takes the name of a file with pushes, "-" for standard input, prints its
// results and returns the exit code.

// One line for each thing that a device refuses, ignores or replaces.
int runCheck(const SimulatorOptions& simulator, const std::string& file);

// The push with its rich features compressed, and the way back.
int runPack(const SimulatorOptions& simulator, const std::string& file);
int runUnpack(const SimulatorOptions& simulator, const std::string& file);

}  // namespace qx
