#pragma once

#include "QXExtensionSDK/content/VTQXNotificationViewController.h"
#include "QXPlatform/ui/ContentExtensionDriver.h"
#include "QXPlatform/ui/ContentExtensionHost.h"
#include "tools/qx/carousel/PlayedCarousel.h"

namespace qx {

// The framework's own extension, in this process. REQUIRES: an application object.
class BuiltInCarousel final : public PlayedCarousel {
 public:
  BuiltInCarousel(QXExtensionSDK::LogLevel logLevel, int width, StepHandler stepTaken);

  QXPlatform::Result<QXPlatform::Dictionary> play(const QXPlatform::Dictionary& command) override;
  void runWindow() override;

 private:
  QXPlatform::ContentExtensionHost host_;
  QXPlatform::ContentExtensionDriver driver_;
};

}  // namespace qx
