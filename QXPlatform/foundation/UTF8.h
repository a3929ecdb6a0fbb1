#pragma once

#include <cstddef>
#include <string_view>

namespace QXPlatform {

// The length, 1 to 4, of the well-formed UTF-8 sequence that `text` begins with; 0 when it begins with none
// (overlong forms, surrogates and code points above U+10FFFF included). REQUIRES: not empty.
std::size_t leadingUTF8Length(std::string_view text);

// Whether all of the text is well-formed UTF-8. Any thread.
bool isValidUTF8(std::string_view text);

}  // namespace QXPlatform
