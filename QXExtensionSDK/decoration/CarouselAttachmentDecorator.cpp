#include "QXExtensionSDK/decoration/CarouselAttachmentDecorator.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

namespace {

constexpr auto kAttachmentIdentifier = "SomeAttachmentId";

void attachFile(const QXPlatform::URL& file, QXPlatform::UNMutableNotificationContent& content,
                ThumbnailReport& report) {
  auto attachment = QXPlatform::UNNotificationAttachment::make(kAttachmentIdentifier, file);
  if (!attachment) {
    Logger::service().debug(LogCategory::carouselAttachment,
                            "Attachment creation failure: ", attachment.error());
    report.notAttached(attachment.error());
    std::error_code ignored;
    std::filesystem::remove(file.filePath(), ignored);
    return;
  }
  content.setAttachments({*std::move(attachment)});
}

}  // namespace

CarouselAttachmentDecorator::CarouselAttachmentDecorator(std::unique_ptr<const MediaURLExtractable> extractor,
                                                         std::unique_ptr<MediaDownloader> downloader,
                                                         std::shared_ptr<ThumbnailReport> report)
    : extractor_(std::move(extractor)), downloader_(std::move(downloader)), report_(std::move(report)) {}

void CarouselAttachmentDecorator::decorate(
    const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
    const QXPlatform::Dictionary& richFeatures, UserInfoChanges changes,
    ProcessingCompletion completion) const {
  const auto url = extractor_->mediaURL(richFeatures);
  if (!url) {
    Logger::service().debug(LogCategory::carouselAttachment, "Carousel Media URL Extraction Failure");
    if (!richFeatures["vt"]["it"].elements().empty())
      report_->notAttached("the first panel has no URL of an image");
    completion(std::move(changes));
    return;
  }
  // The download may outlive this object, so the completion holds all that it needs.
  report_->setDownloading(true);
  downloader_->download(*url,
                        [report = report_, content, changes = std::move(changes),
                         completion = std::move(completion)](const std::optional<QXPlatform::URL>& file) {
                          report->setDownloading(false);
                          if (file) attachFile(*file, *content, *report);
                          completion(changes);
                        });
}

void CarouselAttachmentDecorator::attach(const QXPlatform::URL& file,
                                         QXPlatform::UNMutableNotificationContent& content) const {
  attachFile(file, content, *report_);
}

void CarouselAttachmentDecorator::timeHasExpired() const {
  report_->timeHasExpired();
}

}  // namespace QXExtensionSDK
