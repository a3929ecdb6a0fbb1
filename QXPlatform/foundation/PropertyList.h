#pragma once

#include <optional>
#include <string_view>

#include "QXPlatform/foundation/Value.h"

namespace QXPlatform {

// Reads a property list, XML or binary. Nothing for bytes that are none, nest too deeply (512 levels) or are
// out of proportion for the settings that such files hold (a million bytes, 20,000 nodes). Any thread.
std::optional<Value> parsePropertyList(std::string_view bytes);

}  // namespace QXPlatform
