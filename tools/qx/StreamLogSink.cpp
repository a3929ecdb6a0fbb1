#include "tools/qx/StreamLogSink.h"

#include <ostream>
#include <string>

#include "platform/foundation/Value.h"

namespace qx {

namespace {

std::string asJSON(const platform::LogRecord& record) {
  return platform::Dictionary{{"subsystem", record.subsystem},
                              {"category", record.category},
                              {"type", platform::logTypeName(record.type)},
                              {"message", record.message}}
      .description();
}

std::string asText(const platform::LogRecord& record) {
  std::string line;
  for (const std::string_view part :
       {platform::logTypeName(record.type), record.subsystem, record.category}) {
    line.append(part).append(" ");
  }
  line.append(record.message);
  for (char& letter : line) {
    if (static_cast<unsigned char>(letter) < ' ') letter = ' ';
  }
  return line;
}

}  // namespace

void StreamLogSink::write(const platform::LogRecord& record) {
  const std::string line = (format_ == LogFormat::json ? asJSON(record) : asText(record)) + "\n";
  const std::lock_guard lock(mutex_);
  stream_ << line << std::flush;
}

}  // namespace qx
