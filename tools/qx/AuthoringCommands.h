#pragma once

#include <optional>

#include "tools/qx/EachPush.h"
#include "tools/qx/PushSize.h"
#include "tools/qx/SimulatorOptions.h"
#include "tools/qx/check/FindingFormat.h"

namespace qx {

// For those who write pushes. Each prints its results and returns the exit code.

struct CheckOptions {
  PushInput input;
  std::optional<FindingFormat> format;  // absent: text on a terminal, JSON otherwise
  bool strict = false;                  // warnings fail as well
  PushLimit limit = PushLimit::apns;
};

// What a device refuses, ignores or replaces.
int runCheck(const SimulatorOptions& simulator, const CheckOptions& options);

// The push with its rich features compressed, and the way back.
int runPack(const SimulatorOptions& simulator, const PushInput& input);
int runUnpack(const SimulatorOptions& simulator, const PushInput& input);

}  // namespace qx
