#include "QXExtensionSDK/receipts/QXEDeliveryReceiptPayloadCreator.h"

#include <utility>
#include <vector>

#include "QXExtensionSDK/receipts/ReceiptPayload.h"
#include "QXExtensionSDK/runtime/Logger.h"
#include "platform/foundation/Date.h"

namespace QXExtensionSDK {

namespace {

using platform::Dictionary;
using platform::Value;

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

std::optional<Value> makeItem(const AppGroupSDK::DeliveryReceiptPNModel& receipt, const Sender& sender) {
  if (!sender.applicationId) {
    logMissing("applicationId");
    return std::nullopt;
  }
  if (!sender.deviceId) {
    logMissing("deviceId");
    return std::nullopt;
  }
  const std::string eventDateUtc = receiptDate(receipt.eventDateUtc());
  const DeliveryReceiptEvent event{
      .uuid = receipt.uuid(),
      .applicationId = *sender.applicationId,
      .deviceId = *sender.deviceId,
      .messageId = receipt.messageId(),
      .messageType = receipt.messageType(),
      .propertyBag = receipt.propertyBag() ? std::string_view(*receipt.propertyBag()) : std::string_view(),
      .requestId = receipt.requestId(),
      .receiptDateUtc = sender.receiptDateUtc,
      .eventDateUtc = eventDateUtc};
  return Dictionary{{"eventType", kEventType}, {"event", event.toJSON()}};
}

}  // namespace

Dictionary DeliveryReceiptEvent::toJSON() const {
  PayloadEntries entries{
      {"uuid", uuid},           {"applicationId", applicationId}, {"deviceId", deviceId},
      {"messageId", messageId}, {"messageType", messageType},     {"propertyBag", propertyBag}};
  addUnlessEmpty(entries, "requestId", requestId.value_or(std::string_view()));
  addUnlessEmpty(entries, "receiptDateUtc", receiptDateUtc);
  addUnlessEmpty(entries, "eventDateUtc", eventDateUtc);
  return Dictionary::fromEntries(entries);
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
  std::vector<Value> items;
  items.reserve(receipts.size());
  for (const auto& receipt : receipts) {
    if (auto item = makeItem(receipt, sender)) items.push_back(*std::move(item));
  }
  return Dictionary{{"applicationId", sender.applicationId.value_or("")},
                    {"deviceId", sender.deviceId.value_or("")},
                    {"nodes", payloadNodes(items)}};
}

}  // namespace QXExtensionSDK
