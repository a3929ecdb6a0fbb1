#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "QXExtensionSDK/runtime/ClientCalling.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXExtensionSDK/runtime/processing/AsyncProcessing.h"
#include "QXExtensionSDK/runtime/processing/ModuleProvider.h"
#include "QXExtensionSDK/runtime/processing/ServiceExtensionClientExecuting.h"
#include "QXExtensionSDK/runtime/processing/ServiceExtensionConfigProviding.h"
#include "QXPlatform/dispatch/DispatchGroup.h"
#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/notifications/UNNotificationServiceExtension.h"

namespace QXExtensionSDK {

// What the entry object asks of a worker. Any thread.
class NotificationServiceWorking {
 public:
  virtual ~NotificationServiceWorking() = default;
  virtual void workerDidReceive(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
                                QXPlatform::ContentHandler contentHandler) = 0;
  virtual void workerServiceExtensionTimeWillExpire() = 0;
};

// Handles one notification: runs every processor side by side on a mutable copy of the content, collects the
// userInfo changes that they report, merges them in the order in which they were accepted and hands the
// content back. When the time limit comes first it hands over the content as it stands, and again when the
// processors are through after all.
//
// Made by make(); every operation may be called on any thread. Work that is queued keeps the worker alive,
// and so does a merge that is still to come: until it is done, or until a processor has dropped its
// completion without a call, after which it can never be.
class NotificationServiceWorker final : public NotificationServiceWorking,
                                        public ServiceExtensionConfigProviding,
                                        public ServiceExtensionClientExecutionDelegate,
                                        public std::enable_shared_from_this<NotificationServiceWorker> {
  struct Token {};
  class Turn;

 public:
  // Reads the host's configuration, sets the process's log level and takes the provider's processors.
  static std::shared_ptr<NotificationServiceWorker> make(
      std::weak_ptr<ClientCalling> clientCallingDelegate,
      std::unique_ptr<const ModuleProvider> moduleProvider);

  NotificationServiceWorker() = delete;
  NotificationServiceWorker(Token, std::weak_ptr<ClientCalling> clientCallingDelegate,
                            std::unique_ptr<const ModuleProvider> moduleProvider);

  // Once a worker. Without a copy of the content nothing more happens until the time limit.
  void workerDidReceive(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
                        QXPlatform::ContentHandler contentHandler) override;
  void workerServiceExtensionTimeWillExpire() override;

  VTNotificationServiceConfig clientProvideConfig() const override;
  // Without a living client-calling delegate it logs and does not complete.
  void clientDidReceive(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
                        const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
                        ProcessingCompletion completion) override;

 private:
  // The two fields that the platform's threads write and the serial queue reads.
  struct Delivery {
    QXPlatform::ContentHandler contentHandler;
    std::shared_ptr<QXPlatform::UNMutableNotificationContent> bestAttemptContent;
  };

  void adoptProcessors();
  void start(AsyncProcessing& processor,
             const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
             const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content);
  Delivery delivery() const;
  void keepAlive(std::shared_ptr<NotificationServiceWorker> self);

  // On the serial queue only.
  void accept(AsyncProcessing& processor, UserInfoChanges changes);
  void mergeAndDeliver();
  void deliverOnExpiry() const;

  mutable std::mutex deliveryMutex_;
  // Guarded by deliveryMutex_.
  Delivery delivery_;
  std::shared_ptr<NotificationServiceWorker> untilMerged_;

  std::vector<std::unique_ptr<AsyncProcessing>> processors_;  // fixed after construction
  std::vector<QXPlatform::Dictionary> userInfoChanges_;       // serial queue only
  const Logger& logger_;
  const QXPlatform::DispatchGroup dispatchGroup_;
  const QXPlatform::DispatchQueue concurrentQueue_;
  const QXPlatform::DispatchQueue serialQueue_;
  const std::unique_ptr<const ModuleProvider> moduleProvider_;
  const std::weak_ptr<ClientCalling> clientCallingDelegate_;
};

}  // namespace QXExtensionSDK
