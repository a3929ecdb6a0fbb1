#pragma once

#include <memory>

#include "QXExtensionSDK/decoration/DecompressionContext.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXExtensionSDK/runtime/processing/UserInfoDecorating.h"

namespace QXExtensionSDK {

// Inflates the compressed rich-features payload under "$_rf" into the dictionary "_rf", and blanks "$_rf".
// Any failure logs and changes nothing. Any thread.
class DecompressionDecorator final : public SyncUserInfoDecorator {
 public:
  DecompressionDecorator(const Logger& logger, std::unique_ptr<const DecompressionContext> context);

  UserInfoChanges decorate(const QXPlatform::Dictionary& userInfo,
                           const QXPlatform::UNNotificationRequest& request) const override;

 private:
  const Logger& logger_;
  const std::unique_ptr<const DecompressionContext> context_;
};

}  // namespace QXExtensionSDK
