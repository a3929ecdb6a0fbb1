#include "QXExtensionSDK/receipts/DeliveryReceiptDataParser.h"

#include <string_view>
#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

namespace {

std::optional<std::string> text(const QXPlatform::Dictionary& userInfo, std::string_view key) {
  const auto found = userInfo[key].string();
  return found ? std::optional<std::string>(*found) : std::nullopt;
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
  return DeliveryReceiptData{*std::move(messageId), userInfo["_pb"].dictionary(), text(userInfo, "_r"),
                             *std::move(messageType)};
}

}  // namespace QXExtensionSDK
