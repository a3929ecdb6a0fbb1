#pragma once

#include "QXPlatform/log/Log.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

// Writes log records to standard error, one a line, for people or for programs.
class StandardErrorLogSink final : public QXPlatform::LogSink {
 public:
  explicit StandardErrorLogSink(LogFormat format) : format_(format) {}

  void write(const QXPlatform::LogRecord& record) override;

 private:
  const LogFormat format_;
};

}  // namespace qx
