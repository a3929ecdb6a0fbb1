#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "agent/webpush/WebPush.h"

namespace QXAgent {

// Keys and messages by way of the program that knows about cryptography. Both wait for it, which takes some
// milliseconds; nothing when it cannot be run, or comes to no end.
std::optional<SubscriptionKeys> makeKeysApart();
// As openMessage().
std::optional<QXPlatform::Result<std::string>> openApart(const SubscriptionKeys& keys,
                                                         std::string_view sealed);

}  // namespace QXAgent
