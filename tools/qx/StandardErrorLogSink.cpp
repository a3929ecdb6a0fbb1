#include "tools/qx/StandardErrorLogSink.h"

#include <string>

#include "platform/foundation/Value.h"
#include "platform/log/LogOutput.h"
#include "platform/log/StandardError.h"

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

void StandardErrorLogSink::write(const platform::LogRecord& record) {
  platform::writeToStandardError(format_ == LogFormat::json ? jsonLine(record) : platform::logLine(record));
}

}  // namespace qx
