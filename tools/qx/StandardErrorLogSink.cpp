#include "tools/qx/StandardErrorLogSink.h"

#include <string>

#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/log/LogOutput.h"
#include "QXPlatform/log/StandardError.h"

namespace qx {

namespace {

std::string jsonLine(const QXPlatform::LogRecord& record) {
  return QXPlatform::Dictionary{{"subsystem", record.subsystem},
                                {"category", record.category},
                                {"type", QXPlatform::logTypeName(record.type)},
                                {"message", record.message}}
             .description() +
         "\n";
}

}  // namespace

void StandardErrorLogSink::write(const QXPlatform::LogRecord& record) {
  QXPlatform::writeToStandardError(format_ == LogFormat::json ? jsonLine(record)
                                                              : QXPlatform::logLine(record));
}

}  // namespace qx
