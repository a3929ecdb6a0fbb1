#pragma once

#include <iosfwd>
#include <mutex>

#include "platform/log/Log.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

// Writes log records to a stream, one a line, for people or for programs.
class StreamLogSink final : public platform::LogSink {
 public:
  StreamLogSink(std::ostream& stream, LogFormat format) : stream_(stream), format_(format) {}

  void write(const platform::LogRecord& record) override;

 private:
  std::mutex mutex_;
  std::ostream& stream_;
  const LogFormat format_;
};

}  // namespace qx
