#pragma once

#include <optional>

#include "QXExtensionSDK/payload/CarouselModel.h"
#include "QXExtensionSDK/payload/JSONConvertible.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/DecodingError.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// Turns a notification into the carousel that it carries.
class PayloadCarouselModelParsing {
 public:
  virtual ~PayloadCarouselModelParsing() = default;
  // Nothing when it carries none that can be shown.
  virtual std::optional<CarouselModel> parse(const QXPlatform::UNNotificationRequest& request) const = 0;
};

// Reads the rich features under "_rf". Logs why there is nothing. Immutable; any thread.
class PayloadCarouselModelParser final : public PayloadCarouselModelParsing, private JSONConvertible {
 public:
  // `logger`: that of the extension that runs; must outlive the parser.
  explicit PayloadCarouselModelParser(const Logger& logger) : logger_(logger) {}

  std::optional<CarouselModel> parse(const QXPlatform::UNNotificationRequest& request) const override;

  // The decoding that parse() does, for those who want to know what is wrong and where: the path of an error
  // begins at the push, such as /_rf/vt/it/0/md/ul. Logs nothing.
  static QXPlatform::Result<CarouselModel, QXPlatform::DecodingError> decode(
      const QXPlatform::Dictionary& richFeatures);

 private:
  const Logger& logger_;
};

}  // namespace QXExtensionSDK
