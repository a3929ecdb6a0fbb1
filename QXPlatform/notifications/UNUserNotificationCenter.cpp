#include "QXPlatform/notifications/UNUserNotificationCenter.h"

#include <algorithm>
#include <utility>

namespace QXPlatform {

UNUserNotificationCenter& UNUserNotificationCenter::current() {
  static UNUserNotificationCenter center;
  return center;
}

void UNUserNotificationCenter::addDeliveredNotification(
    std::shared_ptr<const UNNotificationRequest> request) {
  const std::lock_guard lock(mutex_);
  std::erase_if(delivered_, [&](const auto& other) { return other->identifier == request->identifier; });
  delivered_.push_back(std::move(request));
}

void UNUserNotificationCenter::removeDeliveredNotificationsWithIdentifiers(
    const std::vector<std::string>& identifiers) {
  const std::lock_guard lock(mutex_);
  std::erase_if(delivered_, [&](const auto& request) {
    return std::find(identifiers.begin(), identifiers.end(), request->identifier) != identifiers.end();
  });
}

std::vector<std::shared_ptr<const UNNotificationRequest>> UNUserNotificationCenter::deliveredNotifications()
    const {
  const std::lock_guard lock(mutex_);
  return delivered_;
}

}  // namespace QXPlatform
