#pragma once

#include <string_view>

namespace QXPlatform {

// Writes whole lines to the process's standard error at once, past std::cerr, so that what several threads
// and processes write does not mix. Any thread.
void writeToStandardError(std::string_view lines);

}  // namespace QXPlatform
