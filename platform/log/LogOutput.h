#pragma once

#include <string>

#include "platform/log/Log.h"

namespace platform {

// Where records go while no sink is installed: the journal or standard error.
void writeToSystemLog(const LogRecord& record);

// "[error] ServiceExtension Network: message" and a line break; control characters in it are escaped.
std::string logLine(const LogRecord& record);

}  // namespace platform
