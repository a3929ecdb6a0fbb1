#pragma once

#include <memory>

#include "QXPlatform/notifications/UNNotificationContentExtension.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXPlatform {
class UIViewController;
}  // namespace QXPlatform

namespace QXExtensionSDK {

// Runs the screen of one kind of expanded notification. Main thread.
class Coordinator {
 public:
  virtual ~Coordinator() = default;

  // Makes the screen and shows the notification.
  virtual void startWith(std::shared_ptr<const QXPlatform::UNNotificationRequest> request) = 0;
  // Shows another notification on the same screen.
  virtual void refreshWith(std::shared_ptr<const QXPlatform::UNNotificationRequest> request) = 0;
  // The controller to embed; null before startWith().
  virtual std::shared_ptr<QXPlatform::UIViewController> primaryViewController() const = 0;
  virtual QXPlatform::UNNotificationContentExtensionResponseOption responseOptionFor(
      const QXPlatform::UNNotificationResponse& response) const = 0;
};

// Chooses the coordinator for a notification.
class CoordinatorFactory {
 public:
  virtual ~CoordinatorFactory() = default;

  // Null when no screen can show the notification.
  virtual std::shared_ptr<Coordinator> createCoordinatorUsing(
      const QXPlatform::UNNotificationRequest& request) const = 0;
};

}  // namespace QXExtensionSDK
