#pragma once

#include <optional>
#include <string>

#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/log/Log.h"

namespace QXPlatform {

// Where records go while no sink is installed: the journal or standard error. When $QX_LOG_FORMAT asks for a
// format it is standard error.
void writeToSystemLog(const LogRecord& record);

enum class LogFormat { text, json };
constexpr auto rawValues(RawValuesOf<LogFormat>) {
  return std::to_array<RawCase<LogFormat>>({{LogFormat::text, "text"}, {LogFormat::json, "json"}});
}

// The format that $QX_LOG_FORMAT, "text" or "json", asks for; nothing when it is neither. Read once.
std::optional<LogFormat> requestedLogFormat();

// One line with its line break, with the present time, as
//
//   text  2024-05-01T09:03:07.250Z [error] ServiceExtension Network: message
//         control characters are escaped, what is not UTF-8 is replaced
//   json  {"time", "thread" (the system's number), "subsystem", "category", "type", "message", and, where the
//         calling thread works on a notification, "push", its identifier}
std::string logLine(const LogRecord& record, LogFormat format);

}  // namespace QXPlatform
