#pragma once

#include <string>
#include <string_view>

namespace qx {

// The text in one line for a terminal, a log or a page: what a push or a file's name says must neither move
// the cursor nor begin a line of its own.
std::string printable(std::string_view text);

}  // namespace qx
