#include "QXExtensionSDK/decoration/AdvancedPushProcessor.h"

#include <utility>

#include "QXExtensionSDK/payload/PayloadKeys.h"
#include "QXExtensionSDK/payload/SenderGate.h"

namespace QXExtensionSDK {

namespace {

// The freshly inflated payload before the one that the push carried plainly.
std::optional<QXPlatform::Dictionary> richFeatures(const UserInfoChanges& changes,
                                                   const QXPlatform::Dictionary& userInfo) {
  auto inflated = changes ? (*changes)[kRichFeaturesKey].dictionary() : std::nullopt;
  return inflated ? inflated : userInfo[kRichFeaturesKey].dictionary();
}

}  // namespace

AdvancedPushProcessor::AdvancedPushProcessor(
    std::unique_ptr<const SyncUserInfoDecorator> decompressionDecorator,
    ButtonRegistrationDecorator buttonRegistrationDecorator,
    std::unique_ptr<const AsyncUserInfoDecorator> attachmentDecorator, const Logger& logger)
    : decompressionDecorator_(std::move(decompressionDecorator)),
      buttonRegistrationDecorator_(buttonRegistrationDecorator),
      attachmentDecorator_(std::move(attachmentDecorator)),
      logger_(logger) {}

void AdvancedPushProcessor::setConfigDelegate(std::weak_ptr<const ServiceExtensionConfigProviding> delegate) {
  configDelegate_ = std::move(delegate);
}

void AdvancedPushProcessor::process(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
                                    const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
                                    ProcessingCompletion completion) {
  if (!shouldProceed(*request, description())) {
    completion(std::nullopt);
    return;
  }
  logger_.debug(LogCategory::serviceGeneral, "Decorating decompressed field");
  UserInfoChanges changes = decompressionDecorator_->decorate(content->userInfo(), *request);
  if (!shouldShowThumbnail()) {
    logger_.debug(LogCategory::carouselAttachment, "Carousel Thumbnail flag disabled");
    completion(std::move(changes));
    return;
  }
  const auto features = richFeatures(changes, content->userInfo());
  if (!features) {
    completion(std::move(changes));
    return;
  }
  attachmentDecorator_->decorate(content, *features, std::move(changes), std::move(completion));
}

void AdvancedPushProcessor::timeHasExpired() const {
  attachmentDecorator_->timeHasExpired();
}

bool AdvancedPushProcessor::shouldShowThumbnail() const {
  const auto delegate = configDelegate_.lock();
  return delegate != nullptr && delegate->clientProvideConfig().shouldShowCarouselThumbnail();
}

}  // namespace QXExtensionSDK
