#pragma once

#include <optional>

#include "QXExtensionSDK/payload/ViewTemplate.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// Which template the notification's rich features ask for, by a look at the template's type alone: the rest
// may still prove undecodable. Nothing, after one error line, when they ask for none that is known. Any
// thread.
std::optional<ViewTemplateType> checkViewTemplate(const QXPlatform::UNNotificationRequest& request,
                                                  const Logger& logger);

}  // namespace QXExtensionSDK
