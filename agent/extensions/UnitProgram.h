#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "agent/extensions/Program.h"

namespace QXAgent {

// What a program may do in its unit.
struct UnitLimits {
  std::string description;
  std::uint64_t memory;                              // bytes
  std::vector<std::filesystem::path> writablePaths;  // all that it may write to, besides a /tmp of its own
};

// Whether the user has a service manager on the session bus.
bool hasUserManager();

// Starts a program in a transient unit of the user's service manager, which keeps it within its limits; waits
// until it runs. What it prints to standard error goes to this process's. Killed with all it has started when
// the Program goes, unless it was released.
QXPlatform::Result<StartedProgram> startUnit(const ProgramStart& start, const UnitLimits& limits);

}  // namespace QXAgent
