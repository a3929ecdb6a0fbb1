#pragma once

#include <memory>

#include "QXExtensionSDK/runtime/processing/AsyncProcessing.h"

namespace QXExtensionSDK {

// Runs the host's hook. Any thread.
class ServiceExtensionClientExecutionDelegate {
 public:
  virtual ~ServiceExtensionClientExecutionDelegate() = default;
  virtual void clientDidReceive(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
                                const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
                                ProcessingCompletion completion) = 0;
};

// The role of a processor that needs the host's hook run; the worker hands itself over right after making it.
class ServiceExtensionClientExecuting {
 public:
  virtual ~ServiceExtensionClientExecuting() = default;
  virtual void setClientExecutionDelegate(
      std::weak_ptr<ServiceExtensionClientExecutionDelegate> delegate) = 0;
};

}  // namespace QXExtensionSDK
