#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "AppGroupSDK/context/PNContextInfo.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/UNNotificationContent.h"

namespace AppGroupSDK {

// Reads the push context, the text under "_co" of a notification: base64 of source, destinations and business
// unit id, joined by colons, the first two decimal bit sets of raw values; 3:6:BU-7 for example. Whatever is
// missing or malformed gives the default context: no source, the one destination `none`, no business unit.
// Any thread.
class PNContextUtils {
 public:
  PNContextUtils() = delete;

  static std::optional<std::string> extractContextFieldFromContent(
      const QXPlatform::UNNotificationContent& content);
  static PNContextInfo parseContextInfoFromContextString(std::string_view text);
  static PNContextInfo parseContextInfoFromUserInfo(const QXPlatform::Dictionary& userInfo);
  static PNContextInfo parseContextInfoFromContent(const QXPlatform::UNNotificationContent& content);
};

}  // namespace AppGroupSDK
