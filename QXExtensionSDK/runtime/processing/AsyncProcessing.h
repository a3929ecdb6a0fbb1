#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/UNNotificationContent.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// What a processor adds to the notification's userInfo; nothing when it changes nothing.
using UserInfoChanges = std::optional<QXPlatform::Dictionary>;
// Called once by a processor, on any thread.
using ProcessingCompletion = std::function<void(UserInfoChanges)>;

// One of the pieces of work that the service extension does on a notification. All processors of one
// notification run side by side on the same content.
class AsyncProcessing {
 public:
  virtual ~AsyncProcessing() = default;

  // Runs on the worker's concurrent queue. May change the content directly, but not the properties that
  // another processor changes. Calls the completion once, now or later, or the notification waits for its
  // time limit.
  virtual void process(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
                       const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
                       ProcessingCompletion completion) = 0;

  // The notification is handed over as it stands. Any thread, while process() runs as well.
  virtual void timeHasExpired() const {}

  // The class's name, for log lines.
  virtual std::string_view description() const = 0;

  // Whether the worker has accepted this processor's completion. The worker's serial queue alone touches it.
  bool completionCalled = false;
};

}  // namespace QXExtensionSDK
