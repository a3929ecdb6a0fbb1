#pragma once

#include <string>
#include <string_view>

namespace QXPlatform {

// Whether all of the text is well-formed UTF-8; overlong forms, surrogates and code points above U+10FFFF are
// not. Any thread.
bool isValidUTF8(std::string_view text);

// The text with U+FFFD in place of each malformed part. Any thread.
std::string replacingInvalidUTF8(std::string_view text);

}  // namespace QXPlatform
