#pragma once

#include <optional>

#include "QXPlatform/foundation/URL.h"
#include "QXPlatform/network/URLSession.h"

namespace QXPlatform {

// Why no transfer goes to a URL; nothing when one may: https anywhere, plain http to the loopback and, when
// the bundle allows arbitrary loads, anywhere. Any thread.
std::optional<URLError> refusal(const URL& url);

}  // namespace QXPlatform
