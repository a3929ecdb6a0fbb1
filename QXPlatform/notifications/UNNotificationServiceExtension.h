#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXPlatform {

using ContentHandler = std::function<void(std::shared_ptr<const UNNotificationContent>)>;

// Base of an extension that may change a notification before it is shown. The system makes an object for each
// notification and calls both entries on threads of its own choosing.
class UNNotificationServiceExtension : public std::enable_shared_from_this<UNNotificationServiceExtension> {
 public:
  // How many notifications one process takes at the same time; an extension that bears more hides it with a
  // number of its own.
  static constexpr std::size_t kMostNotificationsAtOnce = 1;

  virtual ~UNNotificationServiceExtension() = default;

  // Calls the handler with what to show, on any thread. The system shows the first call's content and ignores
  // later ones.
  virtual void didReceiveNotificationRequest(std::shared_ptr<const UNNotificationRequest> request,
                                             ContentHandler contentHandler) = 0;
  // The time limit is about to end: the handler must be called now.
  virtual void serviceExtensionTimeWillExpire() = 0;
};

}  // namespace QXPlatform
