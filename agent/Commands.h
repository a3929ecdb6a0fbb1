#pragma once

#include <cstdint>
#include <string>

#include "agent/setup/Installation.h"

namespace QXAgent {

// What the program's subcommands do; each returns the exit code. Results go to standard output as JSON, one
// object a line; an error is one line on standard error.

struct RunOptions {
  std::string app;
  bool readsLines = false;
  std::int64_t idleSeconds = 120;
};
int runAgent(const RunOptions& options);
// Relative paths become absolute; the name is the app's id when there is none.
int runInstall(Installation installation);
int runUninstall(const std::string& app);
int runEndpoint(const std::string& app);
int runStatus(const std::string& app);

}  // namespace QXAgent
