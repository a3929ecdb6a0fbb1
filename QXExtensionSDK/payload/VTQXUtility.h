#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Date.h"
#include "platform/foundation/Value.h"
#include "platform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// Small shared conversions. None raises; each answers nothing after one error line. Any thread.
class VTQXUtility {
 public:
  VTQXUtility() = delete;

  // 2024-05-01T09:03:07.250Z
  static std::optional<std::string> dateString(platform::Date date);

  // The JSON object in `text`; nothing for any other JSON, and for text that is not JSON.
  static std::optional<platform::Dictionary> dictionary(std::string_view text);

  // Whether this messaging system sent the push: "_sid" is VTQX in any letter case.
  static bool isVTQXPushNotification(const platform::UNNotificationRequest& request);
  static bool isVTQXPush(const platform::Dictionary& userInfo);
};

}  // namespace QXExtensionSDK
