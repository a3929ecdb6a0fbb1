#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/qx/PushVerdicts.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

struct PushOptions {
  std::vector<std::string> files;  // "-" is standard input, as is no file at all
  bool noThumbnail = false;
  std::optional<std::string> hookChanges;
  std::optional<std::string> hookRaise;
  bool hookHang = false;
  double timeLimitSeconds = 30;
  std::size_t jobs = 1;
  std::optional<std::string> attachments;  // a directory, or "none"
  std::optional<std::filesystem::path> extension;
  std::optional<std::string> identifier;  // of the one push; of several each has its number behind it
  std::vector<PushFailure> failOn;
  std::optional<std::string> junit;  // where the report goes
};

// Sends pushes through the service extension and prints what a device would show. Returns the exit code.
int runPush(const SimulatorOptions& simulator, const PushOptions& options);

}  // namespace qx
