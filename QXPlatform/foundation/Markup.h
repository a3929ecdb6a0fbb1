#pragma once

#include <string>
#include <string_view>

namespace QXPlatform {

// A text as HTML, XML and a notification's markup write it, also between double quotes. Any thread.
std::string escapedMarkup(std::string_view text);

}  // namespace QXPlatform
