#include "QXExtensionSDK/receipts/QXEDeliveryReceiptPayloadCreator.h"

#include <utility>

#include "QXExtensionSDK/runtime/Logger.h"
#include "platform/foundation/Date.h"

namespace QXExtensionSDK {

namespace {

using platform::Dictionary;

constexpr int kEventType = 112;

// What the receipts of one payload share.
struct Sender {
  std::optional<std::string_view> applicationId;
  std::optional<std::string_view> deviceId;
  std::string receiptDateUtc;
};

Sender makeSender(const std::optional<AppGroupSDK::AppDeviceInfo>& info) {
  Sender sender;
  sender.receiptDateUtc = receiptDate(platform::Date::now().secondsSince1970);
  if (info) {
    sender.applicationId = info->applicationId();
    sender.deviceId = info->deviceId();
  }
  return sender;
}

void logMissing(std::string_view field) {
  Logger::service().error(LogCategory::deliveryReceipt, "DeliveryReceiptEvent creation failure: ", field,
                          " is missing");
}

void addItem(ReceiptItems& items, const AppGroupSDK::DeliveryReceiptPNModel& receipt, const Sender& sender) {
  if (!sender.applicationId) return logMissing("applicationId");
  if (!sender.deviceId) return logMissing("deviceId");
  const std::string eventDateUtc = receiptDate(receipt.eventDateUtc());
  const DeliveryReceiptEvent event{
      .uuid = receipt.uuid(),
      .applicationId = *sender.applicationId,
      .deviceId = *sender.deviceId,
      .messageId = receipt.messageId(),
      .messageType = receipt.messageType(),
      .propertyBag = receipt.propertyBag() ? std::string_view(*receipt.propertyBag()) : std::string_view(),
      .requestId = receipt.requestId() ? std::string_view(*receipt.requestId()) : std::string_view(),
      .receiptDateUtc = sender.receiptDateUtc,
      .eventDateUtc = eventDateUtc};
  event.addTo(items);
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
    : appDeviceInfoProvider_(std::move(appDeviceInfoProvider)) {}

std::optional<Dictionary> QXEDeliveryReceiptPayloadCreator::createPayload(const Receipts& receipts) const {
  if (receipts.empty()) {
    // The text names the other module; that is how it has always read.
    Logger::service().debug(LogCategory::deliveryReceipt,
                            "No pending receipts to create MAM delivery receipt payload");
    return std::nullopt;
  }
  const Sender sender = makeSender(appDeviceInfoProvider_->appDeviceInfo());
  ReceiptItems items(receipts.size());
  for (const auto& receipt : receipts) addItem(items, receipt, sender);
  if (items.empty()) return std::nullopt;
  return Dictionary{{"applicationId", *sender.applicationId},
                    {"deviceId", *sender.deviceId},
                    {"nodes", std::move(items).nodes()}};
}

}  // namespace QXExtensionSDK
