#include "QXExtensionSDK/payload/ViewTemplateCheck.h"

#include <string_view>

#include "QXExtensionSDK/payload/PayloadKeys.h"

namespace QXExtensionSDK {

namespace {

const platform::Value* findDictionary(const platform::Value& parent, std::string_view key) {
  const platform::Value* value = parent.find(key);
  return value != nullptr && value->isDictionary() ? value : nullptr;
}

}  // namespace

std::optional<ViewTemplateType> checkViewTemplate(const platform::UNNotificationRequest& request,
                                                  const Logger& logger) {
  const auto refuse = [&](std::string_view message) {
    logger.error(logger.generalCategory(), message);
    return std::nullopt;
  };
  const platform::Value userInfo =
      request.content != nullptr ? request.content->userInfo() : platform::Dictionary();
  const platform::Value* richFeatures = findDictionary(userInfo, kRichFeaturesKey);
  if (richFeatures == nullptr) return refuse("Rich features payload missing");
  const platform::Value* viewTemplate = findDictionary(*richFeatures, "vt");
  if (viewTemplate == nullptr) return refuse("ViewTemplate payload missing");
  const platform::Value* type = viewTemplate->find("t");
  const auto rawValue = type != nullptr ? type->string() : std::nullopt;
  if (!rawValue) return refuse("ViewTemplate type is not String");
  const auto known = platform::fromRawValue<ViewTemplateType>(*rawValue);
  if (!known) return refuse("Invalid view template raw value");
  return known;
}

}  // namespace QXExtensionSDK
