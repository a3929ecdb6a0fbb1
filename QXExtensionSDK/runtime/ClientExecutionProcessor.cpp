#include "QXExtensionSDK/runtime/ClientExecutionProcessor.h"

#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

void ClientExecutionProcessor::setClientExecutionDelegate(
    std::weak_ptr<ServiceExtensionClientExecutionDelegate> delegate) {
  clientExecutionDelegate_ = std::move(delegate);
}

void ClientExecutionProcessor::process(
    const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
    const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
    ProcessingCompletion completion) {
  if (const auto delegate = clientExecutionDelegate_.lock()) {
    delegate->clientDidReceive(request, content, std::move(completion));
  } else {
    Logger::service().error(LogCategory::serviceGeneral, "ServiceExtensionClientExecuting delegate is nil");
  }
}

}  // namespace QXExtensionSDK
