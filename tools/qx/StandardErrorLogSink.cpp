#include "tools/qx/StreamLogSink.h"

#include <ostream>
#include <string>

#include "platform/foundation/Value.h"
#include "platform/log/LogOutput.h"

namespace qx {

namespace {

std::string jsonLine(const platform::LogRecord& record) {
  return platform::Dictionary{{"subsystem", record.subsystem},
                              {"category", record.category},
                              {"type", platform::logTypeName(record.type)},
                              {"message", record.message}}
             .description() +
         "\n";
}

}  // namespace

void StreamLogSink::write(const platform::LogRecord& record) {
  const std::string line = format_ == LogFormat::json ? jsonLine(record) : platform::logLine(record);
  const std::lock_guard lock(mutex_);
  stream_ << line << std::flush;
}

}  // namespace qx
