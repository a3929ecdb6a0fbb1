#include "QXExtensionSDK/receipts/MAMDeliveryReceiptPayloadCreator.h"

#include <utility>

#include "QXPlatform/foundation/Bundle.h"
#include "QXPlatform/foundation/Device.h"
#include "QXPlatform/foundation/Locale.h"

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

QXPlatform::Dictionary MAMDeliveryReceiptPayloadCreator::makeBody(const Info& info,
                                                                  QXPlatform::Value nodes) const {
  const auto& device = QXPlatform::Device::current();
  return {{"deviceId", info.deviceId()},
          {"deviceModel", device.name},
          {"devicePlatform", "iPhone OS"},
          {"deviceVersion", device.systemVersion},
          {"locale", QXPlatform::Locale::currentIdentifier()},
          {"mobileAppName", QXPlatform::Bundle::main().bundleIdentifier().value_or("")},
          {"nodes", std::move(nodes)}};
}

}  // namespace QXExtensionSDK
