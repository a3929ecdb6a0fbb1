#pragma once

#include <optional>
#include <string>

#include "QXPlatform/foundation/Value.h"

namespace AppGroupSDK {

// How a carousel click names the notification that it belongs to.
class CarouselRichFeatureMetaUtils {
 public:
  CarouselRichFeatureMetaUtils() = delete;

  // The texts under "_m" and "_r", joined by a colon; one that is missing or no text counts as empty. Nothing
  // when both are empty. Any thread.
  static std::optional<std::string> getUniqueNotificationIdFrom(const QXPlatform::Dictionary& userInfo);
};

}  // namespace AppGroupSDK
