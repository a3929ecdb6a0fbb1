#include "AppGroupSDK/records/CarouselRichFeatureMetaUtils.h"

#include <string_view>

namespace AppGroupSDK {

namespace {

std::string textUnder(std::string_view key, const QXPlatform::Dictionary& userInfo) {
  return std::string(userInfo[key].string().value_or(""));
}

}  // namespace

std::optional<std::string> CarouselRichFeatureMetaUtils::getUniqueNotificationIdFrom(
    const QXPlatform::Dictionary& userInfo) {
  const std::string messageId = textUnder("_m", userInfo);
  const std::string requestId = textUnder("_r", userInfo);
  if (messageId.empty() && requestId.empty()) return std::nullopt;
  return messageId + ":" + requestId;
}

}  // namespace AppGroupSDK
