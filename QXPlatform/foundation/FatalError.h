#pragma once

#include <string_view>

namespace QXPlatform {

// Stops the process for a programming error: the message goes to standard error, then abort().
// Never used for anything that input from outside can cause.
[[noreturn]] void fatalError(std::string_view message);

}  // namespace QXPlatform
