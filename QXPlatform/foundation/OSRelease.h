#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace QXPlatform {

// The value of a variable in the text of an os-release file: assignments in the manner of a shell, one a
// line, the last one holding. Nothing when it is not set or empty.
std::optional<std::string> osReleaseValue(std::string_view text, std::string_view name);

}  // namespace QXPlatform
