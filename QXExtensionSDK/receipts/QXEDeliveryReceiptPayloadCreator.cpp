#include "QXExtensionSDK/receipts/QXEDeliveryReceiptPayloadCreator.h"

#include <utility>

namespace QXExtensionSDK {

namespace {

constexpr int kEventType = 112;

std::string_view textOf(const std::optional<std::string>& text) {
  return text ? std::string_view(*text) : std::string_view();
}

}  // namespace

void DeliveryReceiptEvent::addTo(ReceiptItems& items) const {
  items.add(kEventType, {{"uuid", uuid},
                         {"applicationId", applicationId},
                         {"deviceId", deviceId},
                         {"messageId", messageId},
                         {"messageType", messageType},
                         {"propertyBag", propertyBag},
                         {"requestId", unlessEmpty(requestId)},
                         {"receiptDateUtc", unlessEmpty(receiptDateUtc)},
                         {"eventDateUtc", unlessEmpty(eventDateUtc)}});
}

QXEDeliveryReceiptPayloadCreator::QXEDeliveryReceiptPayloadCreator(
    std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider)
    : ReceiptPayloadCreator(std::move(appDeviceInfoProvider)) {}

std::optional<std::string_view> QXEDeliveryReceiptPayloadCreator::missingField(
    const std::optional<Info>& info) const {
  return info ? std::nullopt : std::optional<std::string_view>("applicationId");
}

void QXEDeliveryReceiptPayloadCreator::addEvent(ReceiptItems& items,
                                                const AppGroupSDK::DeliveryReceiptPNModel& receipt,
                                                const Info& info, std::string_view receiptDateUtc) const {
  const std::string eventDateUtc = receiptDate(receipt.eventDateUtc());
  const DeliveryReceiptEvent event{.uuid = receipt.uuid(),
                                   .applicationId = info.applicationId(),
                                   .deviceId = info.deviceId(),
                                   .messageId = receipt.messageId(),
                                   .messageType = receipt.messageType(),
                                   .propertyBag = textOf(receipt.propertyBag()),
                                   .requestId = textOf(receipt.requestId()),
                                   .receiptDateUtc = receiptDateUtc,
                                   .eventDateUtc = eventDateUtc};
  event.addTo(items);
}

QXPlatform::Dictionary QXEDeliveryReceiptPayloadCreator::makeBody(const Info& info,
                                                                  QXPlatform::Value nodes) const {
  return {
      {"applicationId", info.applicationId()}, {"deviceId", info.deviceId()}, {"nodes", std::move(nodes)}};
}

}  // namespace QXExtensionSDK
