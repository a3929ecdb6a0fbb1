#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Data.h"

namespace QXAgent {

// Base64 with the URL-safe alphabet and without padding, in which Web Push writes keys, as strict as
// QXPlatform::decodeBase64.
std::optional<QXPlatform::Data> decodeBase64URL(std::string_view text);
std::string encodeBase64URL(std::string_view bytes);

}  // namespace QXAgent
