#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/UNNotificationAttachment.h"

namespace QXPlatform {

// The properties of a notification, as plain data.
struct NotificationProperties {
  std::string title;
  std::string subtitle;
  std::string body;
  std::optional<std::int64_t> badge;
  std::optional<std::string> sound;
  Dictionary userInfo;
  std::vector<UNNotificationAttachment> attachments;
};

// What a notification shows and carries. Read on any thread; each property is read atomically.
class UNNotificationContent {
 public:
  explicit UNNotificationContent(NotificationProperties properties) : properties_(std::move(properties)) {}
  virtual ~UNNotificationContent() = default;
  UNNotificationContent(const UNNotificationContent&) = delete;
  UNNotificationContent& operator=(const UNNotificationContent&) = delete;

  std::string title() const { return read(&NotificationProperties::title); }
  std::string subtitle() const { return read(&NotificationProperties::subtitle); }
  std::string body() const { return read(&NotificationProperties::body); }
  std::optional<std::int64_t> badge() const { return read(&NotificationProperties::badge); }
  std::optional<std::string> sound() const { return read(&NotificationProperties::sound); }
  Dictionary userInfo() const { return read(&NotificationProperties::userInfo); }
  std::vector<UNNotificationAttachment> attachments() const {
    return read(&NotificationProperties::attachments);
  }

  // All properties as they stand at one instant.
  NotificationProperties snapshot() const;

 protected:
  template <typename T>
  T read(T NotificationProperties::*property) const {
    const std::lock_guard lock(mutex_);
    return properties_.*property;
  }
  template <typename T>
  void replace(T NotificationProperties::*property, T value) {
    const std::lock_guard lock(mutex_);
    std::swap(properties_.*property, value);
  }

 private:
  mutable std::mutex mutex_;
  NotificationProperties properties_;
};

// Content that may be changed: each property is replaced atomically, from any thread, while others read.
class UNMutableNotificationContent final : public UNNotificationContent {
 public:
  using UNNotificationContent::UNNotificationContent;

  // Null when `content` is null.
  static std::shared_ptr<UNMutableNotificationContent> mutableCopy(const UNNotificationContent* content);

  void setTitle(std::string title) { replace(&NotificationProperties::title, std::move(title)); }
  void setSubtitle(std::string subtitle) { replace(&NotificationProperties::subtitle, std::move(subtitle)); }
  void setBody(std::string body) { replace(&NotificationProperties::body, std::move(body)); }
  void setBadge(std::optional<std::int64_t> badge) { replace(&NotificationProperties::badge, badge); }
  void setSound(std::optional<std::string> sound) {
    replace(&NotificationProperties::sound, std::move(sound));
  }
  void setUserInfo(Dictionary userInfo) { replace(&NotificationProperties::userInfo, std::move(userInfo)); }
  void setAttachments(std::vector<UNNotificationAttachment> attachments) {
    replace(&NotificationProperties::attachments, std::move(attachments));
  }
};

}  // namespace QXPlatform
