#include "tools/qx/StandardErrorLogSink.h"

#include "QXPlatform/log/LogOutput.h"
#include "QXPlatform/log/StandardError.h"

namespace qx {

void StandardErrorLogSink::write(const QXPlatform::LogRecord& record) {
  QXPlatform::writeToStandardError(QXPlatform::logLine(record, format_));
}

}  // namespace qx
