#pragma once

#include <memory>

#include "QXExtensionSDK/decoration/MediaDownloader.h"
#include "QXExtensionSDK/decoration/MediaURLExtractable.h"
#include "QXExtensionSDK/decoration/ThumbnailReport.h"
#include "QXExtensionSDK/runtime/processing/UserInfoDecorating.h"

namespace QXExtensionSDK {

// Makes a local file the notification's only attachment. Any thread.
class NotificationAttachmentDecorator {
 public:
  virtual ~NotificationAttachmentDecorator() = default;
  // On failure the content stays as it is and the file is removed.
  virtual void attach(const QXPlatform::URL& file,
                      QXPlatform::UNMutableNotificationContent& content) const = 0;
};

// Shows the carousel's first image as the notification's thumbnail. Whatever fails on the way, the
// notification goes on without one.
class CarouselAttachmentDecorator final : public AsyncUserInfoDecorator,
                                          public NotificationAttachmentDecorator {
 public:
  // `report`: that of the downloader.
  CarouselAttachmentDecorator(std::unique_ptr<const MediaURLExtractable> extractor,
                              std::unique_ptr<MediaDownloader> downloader,
                              std::shared_ptr<ThumbnailReport> report);

  void decorate(const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
                const QXPlatform::Dictionary& richFeatures, UserInfoChanges changes,
                ProcessingCompletion completion) const override;
  void timeHasExpired() const override;
  void attach(const QXPlatform::URL& file, QXPlatform::UNMutableNotificationContent& content) const override;

 private:
  const std::unique_ptr<const MediaURLExtractable> extractor_;
  const std::unique_ptr<MediaDownloader> downloader_;
  const std::shared_ptr<ThumbnailReport> report_;
};

}  // namespace QXExtensionSDK
