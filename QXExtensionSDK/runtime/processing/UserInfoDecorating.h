#pragma once

#include <memory>

#include "QXExtensionSDK/runtime/processing/AsyncProcessing.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/UNNotificationContent.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// A step of a processor that answers its changes at once. Any thread.
class SyncUserInfoDecorator {
 public:
  virtual ~SyncUserInfoDecorator() = default;
  virtual UserInfoChanges decorate(const QXPlatform::Dictionary& userInfo,
                                   const QXPlatform::UNNotificationRequest& request) const = 0;
};

// A step of a processor that changes the content from the rich-features dictionary and passes `changes` on to
// the completion when it is through, on any thread. The completion is called exactly once.
class AsyncUserInfoDecorator {
 public:
  virtual ~AsyncUserInfoDecorator() = default;
  virtual void decorate(const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
                        const QXPlatform::Dictionary& richFeatures, UserInfoChanges changes,
                        ProcessingCompletion completion) const = 0;
  virtual void timeHasExpired() const = 0;
};

}  // namespace QXExtensionSDK
