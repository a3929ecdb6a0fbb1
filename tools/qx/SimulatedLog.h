#pragma once

#include <cstdint>

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "tools/qx/SimulatorOptions.h"
#include "tools/qx/StandardErrorLogSink.h"

namespace qx {

// While it lives, the framework's log goes to standard error as the options ask. For commands that use the
// framework's parts without a host that would set the level.
class SimulatedLog {
 public:
  explicit SimulatedLog(const SimulatorOptions& options) : sink_(options.logFormat), installed_(sink_) {
    QXExtensionSDK::Logger::setGlobalLoglevel(static_cast<std::int64_t>(options.logLevel));
  }

 private:
  StandardErrorLogSink sink_;
  const QXPlatform::ScopedLogSink installed_;
};

}  // namespace qx
