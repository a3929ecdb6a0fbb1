#include "QXExtensionSDK/payload/ViewTemplateCheck.h"

#include <string_view>

#include "QXExtensionSDK/payload/PayloadKeys.h"

namespace QXExtensionSDK {

namespace {

const QXPlatform::Value* findDictionary(const QXPlatform::Value& parent, std::string_view key) {
  const QXPlatform::Value* value = parent.find(key);
  return value != nullptr && value->isDictionary() ? value : nullptr;
}

}  // namespace

std::optional<ViewTemplateType> checkViewTemplate(const QXPlatform::UNNotificationRequest& request,
                                                  const Logger& logger) {
  const auto refuse = [&](std::string_view message) {
    logger.error(logger.generalCategory(), message);
    return std::nullopt;
  };
  const QXPlatform::Value userInfo =
      request.content != nullptr ? request.content->userInfo() : QXPlatform::Dictionary();
  const QXPlatform::Value* richFeatures = findDictionary(userInfo, kRichFeaturesKey);
  if (richFeatures == nullptr) return refuse("Rich features payload missing");
  const QXPlatform::Value* viewTemplate = findDictionary(*richFeatures, "vt");
  if (viewTemplate == nullptr) return refuse("ViewTemplate payload missing");
  const QXPlatform::Value* type = viewTemplate->find("t");
  const auto rawValue = type != nullptr ? type->string() : std::nullopt;
  if (!rawValue) return refuse("ViewTemplate type is not String");
  const auto known = QXPlatform::fromRawValue<ViewTemplateType>(*rawValue);
  if (!known) return refuse("Invalid view template raw value");
  return known;
}

}  // namespace QXExtensionSDK
