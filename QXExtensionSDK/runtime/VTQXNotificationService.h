#pragma once

#include <cstddef>
#include <memory>
#include <mutex>

#include "QXExtensionSDK/runtime/ClientCalling.h"
#include "QXExtensionSDK/runtime/NotificationServiceWorker.h"
#include "QXExtensionSDK/runtime/processing/VTNotificationServiceConfig.h"
#include "QXPlatform/notifications/UNNotificationServiceExtension.h"

namespace QXExtensionSDK {

// The principal class of a host's notification service extension. A host uses it as it is, or derives from it
// and overrides one or both hooks:
//
//   class NotificationService : public QXExtensionSDK::VTQXNotificationService { ... };
//   int main(int argc, char** argv) {
//     return QXPlatform::serviceExtensionMain<NotificationService>(argc, argv);
//   }
class VTQXNotificationService : public QXPlatform::UNNotificationServiceExtension, public ClientCalling {
 public:
  // A notification may block three of the process's threads while it waits for its receipts; more of them
  // would wait for each other.
  static constexpr std::size_t kMostNotificationsAtOnce = 16;

  // The platform's entries; the platform's threads call them.
  void didReceiveNotificationRequest(std::shared_ptr<const QXPlatform::UNNotificationRequest> request,
                                     QXPlatform::ContentHandler contentHandler) override;
  void serviceExtensionTimeWillExpire() override;

  // Host hook: the configuration. Called at least twice a notification, on several threads; must be cheap and
  // answer the same each time. The base answers VTNotificationServiceConfig::defaultConfig().
  virtual VTNotificationServiceConfig vtqxProvideConfig();

  // Host hook: may change the content and must call the handler once, on any thread, with the userInfo
  // entries to add, or with nothing. Called on a background thread for every push, whoever sent it, while the
  // framework's own processors work on the same content; it may block without holding those up. A
  // QXPlatform::Exception that it throws counts as no changes; anything else that it throws ends the process.
  // The base adds nothing.
  virtual void vtqxDidReceiveRequest(
      const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
      const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& mutableContent,
      ClientContentHandler contentHandler);

  void callClientDidReceiveRequest(
      const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
      const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& mutableContent,
      const ClientContentHandler& contentHandler) noexcept final;
  VTNotificationServiceConfig callClientVtqxProvideConfig() final;

  // The worker of the latest request; null before the first.
  std::shared_ptr<NotificationServiceWorking> internalWorker() const;
  void setInternalWorker(std::shared_ptr<NotificationServiceWorking> worker);

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<NotificationServiceWorking> internalWorker_;  // guarded by mutex_
};

}  // namespace QXExtensionSDK
