#pragma once

#include "QXExtensionSDK/runtime/logging/LogLevel.h"

namespace QXExtensionSDK {

// The host's configuration of the service extension. Immutable.
class VTNotificationServiceConfig {
 public:
  VTNotificationServiceConfig() = delete;
  VTNotificationServiceConfig(LogLevel logLevel, bool shouldShowCarouselThumbnail)
      : logLevel_(logLevel), shouldShowCarouselThumbnail_(shouldShowCarouselThumbnail) {}

  // Used wherever the host says nothing: the log level that $QX_LOG_LEVEL names, else no log; thumbnails on.
  static VTNotificationServiceConfig defaultConfig();

  LogLevel logLevel() const { return logLevel_; }
  // Whether the carousel's first image is attached to the notification.
  bool shouldShowCarouselThumbnail() const { return shouldShowCarouselThumbnail_; }

 private:
  LogLevel logLevel_;
  bool shouldShowCarouselThumbnail_;
};

}  // namespace QXExtensionSDK
