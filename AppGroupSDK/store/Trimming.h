#pragma once

#include <string_view>

namespace AppGroupSDK {

// The text without the white space and line breaks (Unicode's, in UTF-8) at its two ends.
std::string_view trimmingWhitespaceAndNewlines(std::string_view text);

}  // namespace AppGroupSDK
