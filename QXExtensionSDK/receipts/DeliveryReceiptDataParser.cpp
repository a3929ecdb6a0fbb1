#include "QXExtensionSDK/receipts/DeliveryReceiptDataParser.h"

#include <string_view>
#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

namespace {

std::optional<std::string> text(const QXPlatform::Dictionary& userInfo, std::string_view key) {
  const QXPlatform::Value* value = userInfo.find(key);
  const auto found = value != nullptr ? value->string() : std::nullopt;
  return found ? std::optional<std::string>(*found) : std::nullopt;
}

std::optional<QXPlatform::Dictionary> dictionary(const QXPlatform::Dictionary& userInfo,
                                                 std::string_view key) {
  const QXPlatform::Value* value = userInfo.find(key);
  return value != nullptr ? value->dictionary() : std::nullopt;
}

}  // namespace

std::optional<DeliveryReceiptData> DeliveryReceiptDataParser::parse(
    const QXPlatform::Dictionary& userInfo) const {
  auto messageId = text(userInfo, "_m");
  if (!messageId) {
    Logger::service().error(LogCategory::deliveryReceipt,
                            "Missing required messageId so unable to generate delivery receipt");
    return std::nullopt;
  }
  auto messageType = text(userInfo, "_mt");
  if (!messageType) {
    Logger::service().error(LogCategory::deliveryReceipt,
                            "Missing required messageType so unable to generate delivery receipt");
    return std::nullopt;
  }
  return DeliveryReceiptData{*std::move(messageId), dictionary(userInfo, "_pb"), text(userInfo, "_r"),
                             *std::move(messageType)};
}

}  // namespace QXExtensionSDK
