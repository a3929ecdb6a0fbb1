#include "QXExtensionSDK/payload/VTQXUtility.h"

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/UTF8.h"

namespace QXExtensionSDK {

namespace {

constexpr std::string_view kSenderKey = "_sid";
constexpr std::string_view kSender = "VTQX";

}  // namespace

std::optional<std::string> VTQXUtility::dateString(QXPlatform::Date date) {
  auto text = QXPlatform::formatUTCMilliseconds(date);
  if (!text) Logger::service().error(LogCategory::serviceGeneral, "DateString conversion failure");
  return text;
}

std::optional<QXPlatform::Dictionary> VTQXUtility::dictionary(std::string_view text) {
  const auto parsed = QXPlatform::parseJSON(text);
  if (!parsed && !QXPlatform::isValidUTF8(text)) {
    Logger::service().error(LogCategory::serviceGeneral, "Can't convert string to data");
    return std::nullopt;
  }
  if (!parsed) {
    Logger::service().error(LogCategory::serviceGeneral,
                            "Can't convert data to dictionary, error=", parsed.error());
    return std::nullopt;
  }
  return parsed->dictionary();
}

bool VTQXUtility::isVTQXPushNotification(const QXPlatform::UNNotificationRequest& request) {
  return request.content != nullptr && isVTQXPush(request.content->userInfo());
}

bool VTQXUtility::isVTQXPush(const QXPlatform::Dictionary& userInfo) {
  // No other character's upper case is one of the sender's four letters, so ASCII is all there is to fold.
  return QXPlatform::equalsIgnoringCase(userInfo[kSenderKey].string().value_or(""), kSender);
}

}  // namespace QXExtensionSDK
