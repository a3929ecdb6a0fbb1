#pragma once

#include <memory>
#include <string_view>

#include "QXExtensionSDK/runtime/processing/AsyncProcessing.h"
#include "QXExtensionSDK/runtime/processing/ServiceExtensionClientExecuting.h"

namespace QXExtensionSDK {

// Runs the host's own hook on every push, whoever sent it.
class ClientExecutionProcessor final : public AsyncProcessing, public ServiceExtensionClientExecuting {
 public:
  void setClientExecutionDelegate(std::weak_ptr<ServiceExtensionClientExecutionDelegate> delegate) override;

  // Without a living delegate it logs and never completes: only the time limit then ends the notification.
  void process(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
               const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
               ProcessingCompletion completion) override;
  std::string_view description() const override { return "ClientExecutionProcessor"; }

 private:
  std::weak_ptr<ServiceExtensionClientExecutionDelegate> clientExecutionDelegate_;
};

}  // namespace QXExtensionSDK
