#pragma once

#include <filesystem>

#include "tools/qx/SimulatorOptions.h"

namespace qx {

// Prepares this process's environment for a host's own extension program, which inherits it: its bundle is
// the one beside it, when it brings one and the user names no other, and its log that of the options where
// the host does not say otherwise.
void setEnvironmentOf(const std::filesystem::path& program, const SimulatorOptions& simulator);

}  // namespace qx
