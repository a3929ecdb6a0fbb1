#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "agent/webpush/WebPush.h"

namespace QXAgent {

// Keys as they go from one process to another: private key, public key, auth.
inline constexpr std::size_t kKeyBytes = 32 + 65 + 16;
std::string toBytes(const SubscriptionKeys& keys);
// Nothing when they are not as many.
std::optional<SubscriptionKeys> keysFromBytes(std::string_view bytes);

}  // namespace QXAgent
