#include <array>
#include <cstddef>
#include <cstdlib>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/Date.h"
#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/foundation/ThreadNumber.h"
#include "QXPlatform/foundation/UTF8.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/log/LogOutput.h"
#include "QXPlatform/log/LogSubject.h"

namespace QXPlatform {
namespace {

constexpr char kFirstByteOfC1 = '\xC2';

bool isControl(unsigned char byte) {
  return byte < 0x20 || byte == 0x7F;
}

// U+0080 to U+009F, which a terminal obeys as well, are two bytes in UTF-8.
bool isC1Control(std::string_view text, std::size_t at) {
  return text[at] == kFirstByteOfC1 && static_cast<unsigned char>(text[at + 1]) <= 0x9F;
}

void appendHex(std::string& line, unsigned char byte) {
  line += "\\x";
  appendHexByte(line, byte);
}

void appendEscaped(std::string& line, unsigned char byte) {
  switch (byte) {
    case '\n':
      line += "\\n";
      break;
    case '\r':
      line += "\\r";
      break;
    case '\t':
      line += "\\t";
      break;
    default:
      appendHex(line, byte);
  }
}

void appendText(std::string& line, std::string_view text) {
  if (!isValidUTF8(text)) return appendText(line, replacingInvalidUTF8(text));
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (isControl(byte)) {
      appendEscaped(line, byte);
    } else if (isC1Control(text, at)) {
      appendHex(line, static_cast<unsigned char>(text[++at]));
    } else {
      line += text[at];
    }
  }
}

std::string timeText() {
  return formatUTCMilliseconds(Date::now()).value_or("");
}

std::string textLine(const LogRecord& record) {
  std::string line = timeText();
  line.reserve(line.size() + record.subsystem.size() + record.category.size() + record.message.size() + 16);
  line += " [";
  line += logTypeName(record.type);
  line += "] ";
  appendText(line, record.subsystem);
  line += ' ';
  appendText(line, record.category);
  line += ": ";
  appendText(line, record.message);
  return line;
}

std::string jsonLine(const LogRecord& record) {
  const Dictionary line{
      {"time", timeText()},          {"thread", currentThreadNumber()},  {"subsystem", record.subsystem},
      {"category", record.category}, {"type", logTypeName(record.type)}, {"message", record.message}};
  const LogSubject subject = currentLogSubject();
  return (subject == nullptr ? line : line.setting("push", *subject)).description();
}

}  // namespace

std::string_view logTypeName(LogType type) {
  constexpr auto kNames = std::to_array<RawCase<LogType>>({{LogType::debug, "debug"},
                                                           {LogType::default_, "default"},
                                                           {LogType::error, "error"},
                                                           {LogType::fault, "fault"}});
  return nameIn(kNames, type);
}

std::optional<LogFormat> requestedLogFormat() {
  static const auto format = [] {
    const char* const name = std::getenv("QX_LOG_FORMAT");
    return name == nullptr ? std::optional<LogFormat>() : fromRawValue<LogFormat>(name);
  }();
  return format;
}

std::string logLine(const LogRecord& record, LogFormat format) {
  return (format == LogFormat::json ? jsonLine(record) : textLine(record)) + '\n';
}

}  // namespace QXPlatform
