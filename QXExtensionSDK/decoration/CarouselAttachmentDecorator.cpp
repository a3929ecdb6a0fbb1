#include "QXExtensionSDK/decoration/CarouselAttachmentDecorator.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "QXExtensionSDK/decoration/ThumbnailLog.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

namespace {

constexpr auto kAttachmentIdentifier = "SomeAttachmentId";

void attachFile(const QXPlatform::URL& file, QXPlatform::UNMutableNotificationContent& content) {
  auto attachment = QXPlatform::UNNotificationAttachment::make(kAttachmentIdentifier, file);
  if (!attachment) {
    Logger::service().debug(LogCategory::carouselAttachment,
                            "Attachment creation failure: ", attachment.error());
    logThumbnailNotAttached(attachment.error());
    std::error_code ignored;
    std::filesystem::remove(file.filePath(), ignored);
    return;
  }
  content.setAttachments({*std::move(attachment)});
}

}  // namespace

CarouselAttachmentDecorator::CarouselAttachmentDecorator(std::unique_ptr<const MediaURLExtractable> extractor,
                                                         std::unique_ptr<MediaDownloader> downloader)
    : extractor_(std::move(extractor)), downloader_(std::move(downloader)) {}

void CarouselAttachmentDecorator::decorate(
    const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
    const QXPlatform::Dictionary& richFeatures, UserInfoChanges changes,
    ProcessingCompletion completion) const {
  const auto url = extractor_->mediaURL(richFeatures);
  if (!url) {
    Logger::service().debug(LogCategory::carouselAttachment, "Carousel Media URL Extraction Failure");
    completion(std::move(changes));
    return;
  }
  // The download may outlive this object, so the completion holds all that it needs.
  downloader_->download(*url, [content, changes = std::move(changes), completion = std::move(completion)](
                                  const std::optional<QXPlatform::URL>& file) {
    if (file) attachFile(*file, *content);
    completion(changes);
  });
}

void CarouselAttachmentDecorator::attach(const QXPlatform::URL& file,
                                         QXPlatform::UNMutableNotificationContent& content) const {
  attachFile(file, content);
}

}  // namespace QXExtensionSDK
