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

#include "QXPlatform/linux/JournalStream.h"
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

// Asked once: the environment is not to be read while other threads may change it.
bool runsUnderJournal() {
  static const bool answer = [] {
    const char* const stream = std::getenv("JOURNAL_STREAM");
    return stream != nullptr && isJournalStream(stream, STDERR_FILENO);
  }();
  return answer;
}

std::string field(std::string_view name, std::string_view value) {
  std::string text;
  text.reserve(name.size() + 1 + value.size());
  return text.append(name).append("=").append(value);
}

bool sendToJournal(const LogRecord& record) {
  std::array<std::string, 5> fields{
      field("MESSAGE", record.message),
      field("PRIORITY", std::to_string(journalPriority(record.type))),
      field("QX_SUBSYSTEM", record.subsystem),
      field("QX_CATEGORY", record.category),
      field("QX_TYPE", logTypeName(record.type)),
  };
  std::array<iovec, 5> pieces{};
  for (std::size_t i = 0; i < fields.size(); ++i) pieces[i] = {fields[i].data(), fields[i].size()};
  return sd_journal_sendv(pieces.data(), static_cast<int>(pieces.size())) >= 0;
}

}  // namespace

bool isJournalStream(std::string_view journalStream, int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return false;
  return journalStream == std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

void writeToSystemLog(const LogRecord& record) {
  if (runsUnderJournal() && sendToJournal(record)) return;
  writeToStandardError(logLine(record));
}

}  // namespace QXPlatform
