#include "QXPlatform/notifications/UNNotificationContent.h"

namespace QXPlatform {

NotificationProperties UNNotificationContent::snapshot() const {
  const std::lock_guard lock(mutex_);
  return properties_;
}

// What goes, goes outside the lock, and its files with it.
void UNNotificationContent::replaceAttachments(std::vector<UNNotificationAttachment> attachments) {
  const std::lock_guard lock(mutex_);
  std::swap(properties_.attachments, attachments);
  if (*closed_) std::erase_if(properties_.attachments, &UNNotificationAttachment::isDownload);
}

std::shared_ptr<UNMutableNotificationContent> UNMutableNotificationContent::mutableCopy(
    const UNNotificationContent* content) {
  if (content == nullptr) return nullptr;
  return std::make_shared<UNMutableNotificationContent>(content->snapshot(), content->closed_);
}

}  // namespace QXPlatform
