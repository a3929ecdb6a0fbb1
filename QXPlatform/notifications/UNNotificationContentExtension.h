#pragma once

#include <functional>
#include <memory>
#include <string>

#include "QXPlatform/foundation/Date.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXPlatform {

// A notification that has been delivered.
struct UNNotification {
  Date date;
  std::shared_ptr<const UNNotificationRequest> request;
};

// What the user did with a notification: the identifier of the action chosen.
struct UNNotificationResponse {
  // The notification itself was tapped.
  static constexpr const char* kDefaultActionIdentifier = "UNNotificationDefaultActionIdentifier";

  UNNotification notification;
  std::string actionIdentifier;
};

enum class UNNotificationContentExtensionResponseOption : unsigned long {
  doNotDismiss = 0,
  dismiss = 1,
  dismissAndForwardAction = 2,
};

// Implemented by the view controller that draws an expanded notification. Main thread.
class UNNotificationContentExtension {
 public:
  using ResponseCompletion = std::function<void(UNNotificationContentExtensionResponseOption)>;

  virtual ~UNNotificationContentExtension() = default;

  // Called again for a later notification that the same view is to show.
  virtual void didReceiveNotification(const UNNotification& notification) = 0;
  virtual void didReceiveNotificationResponse(const UNNotificationResponse& response,
                                              const ResponseCompletion& completionHandler) = 0;
};

}  // namespace QXPlatform
