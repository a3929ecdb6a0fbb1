#pragma once

namespace QXExtensionSDK {

// The request time-out that a host is offered when it names none, in seconds.
inline constexpr double defaultRequestTimeout = 15.0;

}  // namespace QXExtensionSDK
