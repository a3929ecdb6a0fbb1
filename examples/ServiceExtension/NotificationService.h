#pragma once

// A host's service extension: the framework does its work, and the host adds its own.

#include <QXExtensionSDK/QXExtensionSDK.h>

class NotificationService final : public QXExtensionSDK::VTQXNotificationService {
 public:
  // Errors to the log, thumbnails on.
  QXExtensionSDK::VTQXNotificationServiceConfig vtqxProvideConfig() override {
    return {QXExtensionSDK::LogLevel::error, true};
  }

  // Adds to userInfo what the app wants to find there when it opens.
  void vtqxDidReceiveRequest(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
                             const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& mutableContent,
                             QXExtensionSDK::ClientContentHandler contentHandler) override {
    if (mutableContent->title().empty()) mutableContent->setTitle("News for you");
    contentHandler(QXPlatform::Dictionary{{"greeting", "Hello from " + request->identifier}});
  }
};
