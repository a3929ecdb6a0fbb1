#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXPlatform {

// The delivered notifications that still stand in this process's list, in the order of delivery. Any thread.
class UNUserNotificationCenter {
 public:
  static UNUserNotificationCenter& current();

  // Called by the system's side when a notification is shown; one with the same identifier is replaced.
  void addDeliveredNotification(std::shared_ptr<const UNNotificationRequest> request);
  // Unknown identifiers are ignored.
  void removeDeliveredNotificationsWithIdentifiers(const std::vector<std::string>& identifiers);
  std::vector<std::shared_ptr<const UNNotificationRequest>> deliveredNotifications() const;

 private:
  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<const UNNotificationRequest>> delivered_;
};

}  // namespace QXPlatform
