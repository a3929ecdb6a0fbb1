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
  std::optional<std::string> script;   // file with answers that go before those above
  std::optional<std::int64_t> expect;  // POST requests
  double withinSeconds = 0;            // with expect
};

// Plays the back end until SIGINT or SIGTERM, or until the requests that are expected have come or their time
// is over: prints where it listens, then every request. Returns the exit code: 1 when not all came.
int runBackend(const SimulatorOptions& simulator, const BackendOptions& options);

}  // namespace qx
