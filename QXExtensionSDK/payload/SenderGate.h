#pragma once

#include <string_view>

#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// Whether a processor that serves this system's pushes only is to act on this one; logs when not.
bool shouldProceed(const QXPlatform::UNNotificationRequest& request, std::string_view processorName);

// The line that says so, for a processor that has looked for itself.
void logBackingOut(std::string_view processorName);

}  // namespace QXExtensionSDK
