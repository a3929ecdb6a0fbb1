#pragma once

#include <memory>
#include <string_view>

#include "QXExtensionSDK/decoration/ButtonRegistrationDecorator.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXExtensionSDK/runtime/processing/AsyncProcessing.h"
#include "QXExtensionSDK/runtime/processing/ServiceExtensionConfigProviding.h"
#include "QXExtensionSDK/runtime/processing/UserInfoDecorating.h"

namespace QXExtensionSDK {

// Changes the content of this system's pushes: inflates the rich features, then attaches the thumbnail. Other
// senders' pushes pass untouched.
class AdvancedPushProcessor final : public AsyncProcessing, public ConfigurableVtqxProcessing {
 public:
  AdvancedPushProcessor(std::unique_ptr<const SyncUserInfoDecorator> decompressionDecorator,
                        ButtonRegistrationDecorator buttonRegistrationDecorator,
                        std::unique_ptr<const AsyncUserInfoDecorator> attachmentDecorator,
                        const Logger& logger);

  void setConfigDelegate(std::weak_ptr<const ServiceExtensionConfigProviding> delegate) override;
  void process(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
               const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
               ProcessingCompletion completion) override;
  void timeHasExpired() const override;
  std::string_view description() const override { return "AdvancedPushProcessor"; }

 private:
  bool shouldShowThumbnail() const;

  std::weak_ptr<const ServiceExtensionConfigProviding> configDelegate_;
  const std::unique_ptr<const SyncUserInfoDecorator> decompressionDecorator_;
  const ButtonRegistrationDecorator buttonRegistrationDecorator_;
  const std::unique_ptr<const AsyncUserInfoDecorator> attachmentDecorator_;
  const Logger& logger_;
};

}  // namespace QXExtensionSDK
