#include "QXPlatform/log/LogOutput.h"

// The place in this file says nothing about the message.
#define SD_JOURNAL_SUPPRESS_LOCATION

#include <sys/stat.h>
#include <sys/uio.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>

#include "QXPlatform/log/LogSubject.h"
#include "QXPlatform/log/StandardError.h"

namespace QXPlatform {
namespace {

int journalPriority(LogType type) {
  switch (type) {
    case LogType::debug:
      return LOG_DEBUG;
    case LogType::default_:
      return LOG_NOTICE;
    case LogType::error:
      return LOG_ERR;
    case LogType::fault:
      return LOG_CRIT;
  }
  return LOG_NOTICE;
}

// The stream to the journal is named by "device:inode".
bool isStandardError(std::string_view journalStream) {
  struct stat status {};
  if (fstat(STDERR_FILENO, &status) != 0) return false;
  return journalStream == std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

// Asked once: the environment is not to be read while other threads may change it.
bool runsUnderJournal() {
  static const bool answer = [] {
    const char* const stream = std::getenv("JOURNAL_STREAM");
    return stream != nullptr && isStandardError(stream);
  }();
  return answer;
}

std::string field(std::string_view name, std::string_view value) {
  std::string text;
  text.reserve(name.size() + 1 + value.size());
  return text.append(name).append("=").append(value);
}

bool sendToJournal(const LogRecord& record) {
  const LogSubject subject = currentLogSubject();
  std::array<std::string, 6> fields{
      field("MESSAGE", record.message),
      field("PRIORITY", std::to_string(journalPriority(record.type))),
      field("QX_SUBSYSTEM", record.subsystem),
      field("QX_CATEGORY", record.category),
      field("QX_TYPE", logTypeName(record.type)),
      field("QX_PUSH", subject == nullptr ? "" : *subject),
  };
  std::array<iovec, 6> pieces{};
  for (std::size_t i = 0; i < fields.size(); ++i) pieces[i] = {fields[i].data(), fields[i].size()};
  // The last is only there where there is something to say.
  const std::size_t count = subject == nullptr ? pieces.size() - 1 : pieces.size();
  return sd_journal_sendv(pieces.data(), static_cast<int>(count)) >= 0;
}

}  // namespace

void writeToSystemLog(const LogRecord& record) {
  const auto format = requestedLogFormat();
  if (!format && runsUnderJournal() && sendToJournal(record)) return;
  writeToStandardError(logLine(record, format.value_or(LogFormat::text)));
}

}  // namespace QXPlatform
