#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "QXExtensionSDK/QXExtensionSDK.h"

namespace qx {

// Holds a hanging hook until its notification has expired, so that its thread can end.
class HangGate {
 public:
  void waitUntilOpen();
  void open();

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  bool isOpen_ = false;
};

// How the simulated host's code behaves.
struct HostBehaviour {
  QXExtensionSDK::LogLevel logLevel = QXExtensionSDK::LogLevel::none;
  bool showThumbnail = true;
  std::optional<QXPlatform::Dictionary> changes;
  std::optional<std::string> raiseReason;
  bool hang = false;  // the hook never completes
};

// A host's service extension with both hooks overridden.
class SimulatedHostService final : public QXExtensionSDK::VTQXNotificationService {
 public:
  explicit SimulatedHostService(const HostBehaviour& behaviour) : behaviour_(behaviour) {}

  void serviceExtensionTimeWillExpire() override;
  QXExtensionSDK::VTNotificationServiceConfig vtqxProvideConfig() override;
  void vtqxDidReceiveRequest(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
                             const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& mutableContent,
                             QXExtensionSDK::ClientContentHandler contentHandler) override;

 private:
  const HostBehaviour behaviour_;
  HangGate hangGate_;
};

}  // namespace qx
