#include "tools/qx/SimulatedHostService.h"

namespace qx {

void HangGate::waitUntilOpen() {
  std::unique_lock lock(mutex_);
  opened_.wait(lock, [this] { return isOpen_; });
}

void HangGate::open() {
  const std::lock_guard lock(mutex_);
  isOpen_ = true;
  opened_.notify_all();
}

void SimulatedHostService::serviceExtensionTimeWillExpire() {
  VTQXNotificationService::serviceExtensionTimeWillExpire();
  hangGate_.open();
}

QXExtensionSDK::VTNotificationServiceConfig SimulatedHostService::vtqxProvideConfig() {
  return {behaviour_.logLevel, behaviour_.showThumbnail};
}

void SimulatedHostService::vtqxDidReceiveRequest(
    const std::shared_ptr<const QXPlatform::UNNotificationRequest>& /*request*/,
    const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& /*mutableContent*/,
    QXExtensionSDK::ClientContentHandler contentHandler) {
  if (behaviour_.hang) return hangGate_.waitUntilOpen();
  if (behaviour_.raiseReason) throw QXPlatform::Exception("HostException", *behaviour_.raiseReason);
  contentHandler(behaviour_.changes);
}

}  // namespace qx
