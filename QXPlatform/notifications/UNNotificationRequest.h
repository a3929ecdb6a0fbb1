#pragma once

#include <memory>
#include <string>

#include "QXPlatform/notifications/UNNotificationContent.h"

namespace QXPlatform {

// One notification to be shown. Immutable, shared; any thread. The content may be null when the system could
// not read it.
struct UNNotificationRequest {
  std::string identifier;
  std::shared_ptr<const UNNotificationContent> content;
};

}  // namespace QXPlatform
