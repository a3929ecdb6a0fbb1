#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Data.h"

namespace QXPlatform {

// Standard alphabet with padding. Decoding is strict: a foreign character (line breaks included), missing or
// surplus padding yield nothing. The unused bits of the last character may hold anything.
std::optional<Data> decodeBase64(std::string_view text);
std::string encodeBase64(std::string_view bytes);

}  // namespace QXPlatform
