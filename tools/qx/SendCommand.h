#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "tools/qx/SimulatorOptions.h"

namespace qx {

struct SendOptions {
  std::string subscription;          // name of a file
  std::optional<std::string> vapid;  // name of a file, made when it is not there
  int ttlSeconds = 86'400;
  bool sealOnly = false;
  std::string push;  // name of a file; "-" for standard input
};

// Seals each push for the subscription and posts it to its push service, or writes the sealed body of a
// single one to standard output. Prints what the service answers; returns the exit code.
int runSend(const SimulatorOptions& simulator, const SendOptions& options);

}  // namespace qx
