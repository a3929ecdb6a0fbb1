#pragma once

#include <string_view>

namespace QXPlatform {

// True for a name that may stand in a header section (an RFC 9110 token).
bool isHeaderName(std::string_view name);

// Without the white space around it.
std::string_view trimmedHeaderValue(std::string_view value);

}  // namespace QXPlatform
