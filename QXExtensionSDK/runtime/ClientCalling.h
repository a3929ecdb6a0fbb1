#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "QXExtensionSDK/runtime/processing/VTNotificationServiceConfig.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/UNNotificationContent.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// Takes the host's userInfo changes, or nothing; to be called once, on any thread.
using ClientContentHandler = std::function<void(std::optional<QXPlatform::Dictionary>)>;

// The way back from the worker to the entry object, and so to the host's hooks. Any thread.
class ClientCalling {
 public:
  virtual ~ClientCalling() = default;
  virtual void callClientDidReceiveRequest(
      const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
      const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& mutableContent,
      const ClientContentHandler& contentHandler) = 0;
  virtual VTNotificationServiceConfig callClientVtqxProvideConfig() = 0;
};

}  // namespace QXExtensionSDK
