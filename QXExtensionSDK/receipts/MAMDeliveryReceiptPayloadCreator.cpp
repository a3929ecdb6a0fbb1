#include "QXExtensionSDK/receipts/MAMDeliveryReceiptPayloadCreator.h"

#include <utility>

#include "platform/foundation/Bundle.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/Locale.h"

namespace QXExtensionSDK {

MAMDeliveryReceiptPayloadCreator::MAMDeliveryReceiptPayloadCreator(
    std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider)
    : ReceiptPayloadCreator(std::move(appDeviceInfoProvider)) {}

std::optional<std::string_view> MAMDeliveryReceiptPayloadCreator::missingField(
    const std::optional<Info>& info) const {
  if (!info) return "deviceId";
  return info->sessionId() ? std::nullopt : std::optional<std::string_view>("sessionId");
}

void MAMDeliveryReceiptPayloadCreator::addEvent(ReceiptItems& items,
                                                const AppGroupSDK::DeliveryReceiptPNModel& receipt,
                                                const Info& info, std::string_view receiptDateUtc) const {
  const std::string eventDateUtc = receiptDate(receipt.eventDateUtc());
  items.add("RECEIVED", {{"eventId", receipt.uuid()},
                         {"sessionId", info.sessionId()},
                         {"category", "engagement"},
                         {"messageId", receipt.messageId()},
                         {"receiptDateUtc", unlessEmpty(receiptDateUtc)},
                         {"dateTime", unlessEmpty(eventDateUtc)},
                         {"propertyBag", receipt.propertyBag()}});
}

platform::Dictionary MAMDeliveryReceiptPayloadCreator::makeBody(const Info& info,
                                                                platform::Value nodes) const {
  const auto& device = platform::Device::current();
  return {{"deviceId", info.deviceId()},
          {"deviceModel", device.name},
          {"devicePlatform", "iPhone OS"},
          {"deviceVersion", device.systemVersion},
          {"locale", platform::Locale::currentIdentifier()},
          {"mobileAppName", platform::Bundle::main().bundleIdentifier().value_or("")},
          {"nodes", std::move(nodes)}};
}

}  // namespace QXExtensionSDK
