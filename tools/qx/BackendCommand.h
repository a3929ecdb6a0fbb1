#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "tools/qx/SimulatorOptions.h"

namespace qx {

struct BackendOptions {
  std::uint16_t port = 0;  // 0: a free one
  int status = 200;
  double delaySeconds = 0;
  std::string body = "{}";
  bool hang = false;
  bool close = false;
  std::optional<std::filesystem::path> files;  // without one the built-in panels
  bool tls = false;
};

// Plays the back end until SIGINT or SIGTERM: prints where it listens, then every request. Returns the exit
// code.
int runBackend(const SimulatorOptions& simulator, const BackendOptions& options);

}  // namespace qx
