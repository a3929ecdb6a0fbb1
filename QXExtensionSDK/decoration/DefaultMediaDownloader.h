#pragma once

#include "QXExtensionSDK/decoration/MediaDownloader.h"
#include "QXPlatform/network/URLSession.h"

namespace QXExtensionSDK {

// Downloads over a session of its own, within 15 seconds, into a file named as the remote one so that its
// extension tells the type. An answer outside 200 to 299 yields no file.
class DefaultMediaDownloader final : public MediaDownloader {
 public:
  DefaultMediaDownloader();

  void download(const QXPlatform::URL& remote, Completion completion) override;

 private:
  QXPlatform::URLSession session_;
};

}  // namespace QXExtensionSDK
