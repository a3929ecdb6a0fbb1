#pragma once

#include <optional>
#include <string>

#include "platform/foundation/Value.h"

namespace AppGroupSDK {

// How a carousel click names the notification that it belongs to.
class CarouselRichFeatureMetaUtils {
 public:
  CarouselRichFeatureMetaUtils() = delete;

  // The texts under "_m" and "_r", joined by a colon; one that is missing or no text counts as empty. Nothing
  // when both are empty. Any thread.
  static std::optional<std::string> getUniqueNotificationIdFrom(const platform::Dictionary& userInfo);
};

}  // namespace AppGroupSDK
