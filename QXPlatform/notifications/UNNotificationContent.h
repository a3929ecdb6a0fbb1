#pragma once

#include <atomic>
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

  // Says that the notification has been shown, or given up: downloads that are attached from now on, to this
  // content or a mutable copy, are not kept.
  void close() const { *closed_ = true; }

 protected:
  UNNotificationContent(NotificationProperties properties, std::shared_ptr<std::atomic<bool>> closed)
      : properties_(std::move(properties)), closed_(std::move(closed)) {}

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
  void replaceAttachments(std::vector<UNNotificationAttachment> attachments);

 private:
  friend class UNMutableNotificationContent;

  mutable std::mutex mutex_;
  NotificationProperties properties_;
  // Shared by all content of one notification.
  const std::shared_ptr<std::atomic<bool>> closed_ = std::make_shared<std::atomic<bool>>(false);
};

// Content that may be changed: each property is replaced atomically, from any thread, while others read.
class UNMutableNotificationContent final : public UNNotificationContent {
 public:
  using UNNotificationContent::UNNotificationContent;
  UNMutableNotificationContent(NotificationProperties properties, std::shared_ptr<std::atomic<bool>> closed)
      : UNNotificationContent(std::move(properties), std::move(closed)) {}

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
    replaceAttachments(std::move(attachments));
  }
};

}  // namespace QXPlatform
