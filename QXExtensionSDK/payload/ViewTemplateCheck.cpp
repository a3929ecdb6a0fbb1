#include "QXExtensionSDK/payload/ViewTemplateCheck.h"

#include <string_view>

#include "QXExtensionSDK/payload/PayloadKeys.h"

namespace QXExtensionSDK {

std::optional<ViewTemplateType> checkViewTemplate(const QXPlatform::UNNotificationRequest& request,
                                                  const Logger& logger) {
  const auto refuse = [&](std::string_view message) {
    logger.error(logger.generalCategory(), message);
    return std::nullopt;
  };
  const QXPlatform::Dictionary userInfo =
      request.content != nullptr ? request.content->userInfo() : QXPlatform::Dictionary();
  const QXPlatform::Value& richFeatures = userInfo[kRichFeaturesKey];
  if (!richFeatures.isDictionary()) return refuse("Rich features payload missing");
  const QXPlatform::Value& viewTemplate = richFeatures["vt"];
  if (!viewTemplate.isDictionary()) return refuse("ViewTemplate payload missing");
  const auto rawValue = viewTemplate["t"].string();
  if (!rawValue) return refuse("ViewTemplate type is not String");
  const auto known = QXPlatform::fromRawValue<ViewTemplateType>(*rawValue);
  if (!known) return refuse("Invalid view template raw value");
  return known;
}

}  // namespace QXExtensionSDK
