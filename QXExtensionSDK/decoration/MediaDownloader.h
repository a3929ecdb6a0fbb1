#pragma once

#include <functional>
#include <optional>

#include "QXPlatform/foundation/URL.h"

namespace QXExtensionSDK {

// Fetches a media file. Any thread.
class MediaDownloader {
 public:
  // Gets the local file, which is the receiver's to remove, or nothing.
  using Completion = std::function<void(std::optional<QXPlatform::URL>)>;

  virtual ~MediaDownloader() = default;
  // Calls the completion exactly once, on a background thread.
  virtual void download(const QXPlatform::URL& remote, Completion completion) = 0;
};

}  // namespace QXExtensionSDK
