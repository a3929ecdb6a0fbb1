#include "QXPlatform/notifications/UNNotificationContent.h"

namespace QXPlatform {

NotificationProperties UNNotificationContent::snapshot() const {
  const std::lock_guard lock(mutex_);
  return properties_;
}

std::shared_ptr<UNMutableNotificationContent> UNMutableNotificationContent::mutableCopy(
    const UNNotificationContent* content) {
  if (content == nullptr) return nullptr;
  return std::make_shared<UNMutableNotificationContent>(content->snapshot());
}

}  // namespace QXPlatform
