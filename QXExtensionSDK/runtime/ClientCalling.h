#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "QXExtensionSDK/runtime/VTNotificationServiceConfig.h"
#include "platform/foundation/Value.h"
#include "platform/notifications/UNNotificationContent.h"
#include "platform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// Takes the host's userInfo changes, or nothing; to be called once, on any thread.
using ClientContentHandler = std::function<void(std::optional<platform::Dictionary>)>;

// The way back from the worker to the entry object, and so to the host's hooks. Any thread.
class ClientCalling {
 public:
  virtual ~ClientCalling() = default;
  virtual void callClientDidReceiveRequest(
      const std::shared_ptr<const platform::UNNotificationRequest>& request,
      const std::shared_ptr<platform::UNMutableNotificationContent>& mutableContent,
      const ClientContentHandler& contentHandler) = 0;
  virtual VTNotificationServiceConfig callClientVtqxProvideConfig() = 0;
};

}  // namespace QXExtensionSDK
