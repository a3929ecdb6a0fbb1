#pragma once

#include <filesystem>
#include <optional>

#include "QXExtensionSDK/runtime/logging/LogLevel.h"

namespace qx {

enum class LogFormat { text, json };

// What every subcommand takes. The bundle may also be named by the environment.
struct SimulatorOptions {
  std::optional<std::filesystem::path> groupsRoot;
  std::optional<std::filesystem::path> bundle;
  QXExtensionSDK::LogLevel logLevel = QXExtensionSDK::LogLevel::none;
  LogFormat logFormat = LogFormat::text;
  bool pretty = false;
};

// The bundle that $QX_BUNDLE names; none when it is not set, or empty.
std::optional<std::filesystem::path> bundleFromEnvironment();

// Makes this process, and those it starts, see the containers and the bundle that the options name; without a
// bundle the one that is installed with the simulator. To be called before anything reads them.
void applyEnvironment(const SimulatorOptions& options);

}  // namespace qx
