#pragma once

#include <string_view>

namespace bench {

// Builds the bare library's tree of a text, for the floors that parsing is measured by, and drops it again;
// whether the text is JSON.
bool bareParse(std::string_view text);

}  // namespace bench
