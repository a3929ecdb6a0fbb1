#pragma once

#include <memory>

#include "QXExtensionSDK/decoration/MediaDownloader.h"
#include "QXExtensionSDK/decoration/ThumbnailReport.h"
#include "QXPlatform/network/URLSession.h"

namespace QXExtensionSDK {

// Downloads over a session of its own, within 15 seconds, into a file named as the remote one so that its
// extension tells the type. An answer outside 200 to 299 yields no file.
class DefaultMediaDownloader final : public MediaDownloader {
 public:
  explicit DefaultMediaDownloader(std::shared_ptr<ThumbnailReport> report);

  void download(const QXPlatform::URL& remote, Completion completion) override;

 private:
  QXPlatform::URLSession session_;
  const std::shared_ptr<ThumbnailReport> report_;
};

}  // namespace QXExtensionSDK
