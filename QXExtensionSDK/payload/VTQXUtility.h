#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Date.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// Small shared conversions. None raises; each answers nothing after one error line. Any thread.
class VTQXUtility {
 public:
  VTQXUtility() = delete;

  // 2024-05-01T09:03:07.250Z
  static std::optional<std::string> dateString(QXPlatform::Date date);

  // The JSON object in `text`; nothing for any other JSON, and for text that is not JSON.
  static std::optional<QXPlatform::Dictionary> dictionary(std::string_view text);

  // Whether this messaging system sent the push: "_sid" is VTQX in any letter case.
  static bool isVTQXPushNotification(const QXPlatform::UNNotificationRequest& request);
  static bool isVTQXPush(const QXPlatform::Dictionary& userInfo);
};

}  // namespace QXExtensionSDK
