#pragma once

#include <string>
#include <string_view>

namespace qx {

// The text as raw deflate data, as small as it gets.
std::string deflateRaw(std::string_view text);

}  // namespace qx
