#pragma once

#include <optional>

#include "tools/qx/EachPush.h"
#include "tools/qx/PushSize.h"
#include "tools/qx/SimulatorOptions.h"
#include "tools/qx/check/FindingFormat.h"

namespace qx {

struct CheckOptions {
  PushInput input;
  std::optional<FindingFormat> format;  // absent: text on a terminal, JSON otherwise
  bool strict = false;                  // warnings fail as well
  PushLimit limit = PushLimit::apns;
  std::optional<std::string> junit;  // where the report goes
};

// Says what a device refuses, ignores or replaces. Returns the exit code.
int runCheck(const SimulatorOptions& simulator, const CheckOptions& options);

}  // namespace qx
