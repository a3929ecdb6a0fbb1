#pragma once

#include <functional>

namespace QXExtensionSDK {

// Runs work on the main thread, after what that does now; handed in by whoever owns the thread, such as
// QXPlatform::dispatchMainAsync where the view toolkit does.
using MainDispatch = std::function<void(std::function<void()>)>;

// Runs work away from the main thread, one piece after the other.
using BackgroundDispatch = std::function<void(std::function<void()>)>;

}  // namespace QXExtensionSDK
