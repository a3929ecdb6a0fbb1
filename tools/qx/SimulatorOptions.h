#pragma once

#include <filesystem>
#include <optional>

#include "QXExtensionSDK/runtime/logging/LogLevel.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/log/LogOutput.h"

namespace qx {

using QXPlatform::LogFormat;

// What every subcommand takes. The bundle may also be named by the environment.
struct SimulatorOptions {
  std::optional<std::filesystem::path> groupsRoot;
  std::optional<std::filesystem::path> bundle;
  QXExtensionSDK::LogLevel logLevel = QXExtensionSDK::LogLevel::none;
  LogFormat logFormat = LogFormat::text;
  bool pretty = false;
  bool json = false;    // on a terminal too
  bool stable = false;  // results are the same in every run; of the commands that take it

  // Without what travels in the environment.
  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(jsonField("logLevel", &SimulatorOptions::logLevel),
                                  jsonField("logFormat", &SimulatorOptions::logFormat),
                                  jsonField("pretty", &SimulatorOptions::pretty),
                                  jsonField("stable", &SimulatorOptions::stable));
  }
};

// The bundle that $QX_BUNDLE names; none when it is not set, or empty.
std::optional<std::filesystem::path> bundleFromEnvironment();

// Makes this process, and those it starts, see the containers and the bundle that the options name; without a
// bundle the one that is installed with the simulator. To be called before anything reads them.
void applyEnvironment(const SimulatorOptions& options);

}  // namespace qx
