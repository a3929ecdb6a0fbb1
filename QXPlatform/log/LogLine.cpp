#include <array>
#include <cstddef>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/log/LogOutput.h"

namespace QXPlatform {
namespace {

constexpr char kFirstByteOfC1 = '\xC2';

bool isControl(unsigned char byte) {
  return byte < 0x20 || byte == 0x7F;
}

// U+0080 to U+009F, which a terminal obeys as well, are two bytes in UTF-8.
bool isC1Control(std::string_view text, std::size_t at) {
  if (text[at] != kFirstByteOfC1 || at + 1 == text.size()) return false;
  const auto second = static_cast<unsigned char>(text[at + 1]);
  return second >= 0x80 && second <= 0x9F;
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

}  // namespace

std::string_view logTypeName(LogType type) {
  static constexpr std::array<std::string_view, 4> kNames{"debug", "default", "error", "fault"};
  return kNames.at(static_cast<std::size_t>(type));
}

std::string logLine(const LogRecord& record) {
  std::string line;
  line.reserve(record.subsystem.size() + record.category.size() + record.message.size() + 16);
  line += '[';
  line += logTypeName(record.type);
  line += "] ";
  appendText(line, record.subsystem);
  line += ' ';
  appendText(line, record.category);
  line += ": ";
  appendText(line, record.message);
  line += '\n';
  return line;
}

}  // namespace QXPlatform
