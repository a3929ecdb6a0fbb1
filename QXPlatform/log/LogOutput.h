#pragma once

#include <string>

#include "QXPlatform/log/Log.h"

namespace QXPlatform {

// Where records go while no sink is installed: the journal or standard error.
void writeToSystemLog(const LogRecord& record);

// "[error] ServiceExtension Network: message" and a line break; control characters in it are escaped.
std::string logLine(const LogRecord& record);

}  // namespace QXPlatform
