#include "QXExtensionSDK/runtime/VTQXNotificationService.h"

#include <utility>

#include "QXExtensionSDK/runtime/DefaultModuleProvider.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/foundation/Exception.h"

namespace QXExtensionSDK {

void VTQXNotificationService::didReceiveNotificationRequest(
    std::shared_ptr<const QXPlatform::UNNotificationRequest> request,
    QXPlatform::ContentHandler contentHandler) {
  Logger::service().debug(LogCategory::serviceGeneral,
                          "VTQXNotificationService didReceiveNotificationRequest start");
  const std::shared_ptr<ClientCalling> self(shared_from_this(), this);
  const auto worker = NotificationServiceWorker::make(self, std::make_unique<const DefaultModuleProvider>());
  setInternalWorker(worker);
  worker->workerDidReceive(request, std::move(contentHandler));
}

void VTQXNotificationService::serviceExtensionTimeWillExpire() {
  Logger::service().debug(LogCategory::serviceGeneral,
                          "VTQXNotificationService serviceExtensionTimeWillExpire start");
  if (const auto worker = internalWorker()) worker->workerServiceExtensionTimeWillExpire();
}

VTNotificationServiceConfig VTQXNotificationService::vtqxProvideConfig() {
  Logger::service().debug(LogCategory::serviceGeneral, "VTQXNotificationService vtqxProvideConfig start");
  return VTNotificationServiceConfig::defaultConfig();
}

void VTQXNotificationService::vtqxDidReceiveRequest(
    const std::shared_ptr<const QXPlatform::UNNotificationRequest>& /*request*/,
    const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& /*mutableContent*/,
    // By value, since most overriding hooks keep it.  NOLINTNEXTLINE(performance-unnecessary-value-param)
    ClientContentHandler contentHandler) {
  Logger::service().debug(LogCategory::serviceGeneral, "VTQXNotificationService vtqxDidReceiveRequest start");
  contentHandler(std::nullopt);
}

void VTQXNotificationService::callClientDidReceiveRequest(
    const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
    const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& mutableContent,
    const ClientContentHandler& contentHandler) noexcept {
  try {
    const QXPlatform::ForeignCodeScope foreignCode;
    QXPlatform::DispatchQueue::showLabel();
    vtqxDidReceiveRequest(request, mutableContent, contentHandler);
  } catch (const QXPlatform::Exception& exception) {
    Logger::service().error(LogCategory::serviceGeneral,
                            "VTQXNotificationService exception in client code=", exception.reason());
    contentHandler(std::nullopt);
  }
}

VTNotificationServiceConfig VTQXNotificationService::callClientVtqxProvideConfig() {
  const QXPlatform::ForeignCodeScope foreignCode;
  return vtqxProvideConfig();
}

std::shared_ptr<NotificationServiceWorking> VTQXNotificationService::internalWorker() const {
  const std::lock_guard lock(mutex_);
  return internalWorker_;
}

void VTQXNotificationService::setInternalWorker(std::shared_ptr<NotificationServiceWorking> worker) {
  const std::lock_guard lock(mutex_);
  std::swap(internalWorker_, worker);
}

}  // namespace QXExtensionSDK
