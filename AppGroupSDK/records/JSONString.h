#pragma once

#include <optional>
#include <string>

#include "QXPlatform/foundation/Value.h"

namespace AppGroupSDK {

// A dictionary as pretty-printed JSON; nothing when it holds what JSON cannot.
std::optional<std::string> jsonString(const QXPlatform::Dictionary& dictionary);

}  // namespace AppGroupSDK
