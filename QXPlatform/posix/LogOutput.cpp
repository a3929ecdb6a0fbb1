#include "QXPlatform/log/LogOutput.h"

#include "QXPlatform/log/StandardError.h"

namespace QXPlatform {

void writeToSystemLog(const LogRecord& record) {
  writeToStandardError(logLine(record, requestedLogFormat().value_or(LogFormat::text)));
}

}  // namespace QXPlatform
