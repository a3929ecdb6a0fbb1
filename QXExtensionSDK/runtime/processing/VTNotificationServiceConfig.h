#pragma once

#include <cstdint>

#include "QXExtensionSDK/runtime/logging/LogLevel.h"

namespace QXExtensionSDK {

// The host's configuration of the service extension. Immutable.
class VTNotificationServiceConfig {
 public:
  VTNotificationServiceConfig() = delete;
  VTNotificationServiceConfig(LogLevel logLevel, bool shouldShowCarouselThumbnail)
      : logLevel_(static_cast<std::int64_t>(logLevel)),
        shouldShowCarouselThumbnail_(shouldShowCarouselThumbnail) {}

  // Used wherever the host says nothing: no log, thumbnails on.
  static VTNotificationServiceConfig defaultConfig() { return {LogLevel::none, true}; }

  LogLevel logLevel() const { return static_cast<LogLevel>(logLevel_); }
  // Whether the carousel's first image is attached to the notification.
  bool shouldShowCarouselThumbnail() const { return shouldShowCarouselThumbnail_; }

 private:
  std::int64_t logLevel_;
  bool shouldShowCarouselThumbnail_;
};

}  // namespace QXExtensionSDK
