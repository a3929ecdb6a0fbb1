#pragma once

#include <string_view>

namespace QXPlatform {

// Gives the calling thread the last 15 characters of `name`. Free when it bears them already.
void setCurrentThreadName(std::string_view name);

}  // namespace QXPlatform
