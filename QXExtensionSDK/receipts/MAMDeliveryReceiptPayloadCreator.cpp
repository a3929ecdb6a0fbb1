#include "QXExtensionSDK/receipts/MAMDeliveryReceiptPayloadCreator.h"

#include <utility>
#include <vector>

#include "QXExtensionSDK/receipts/ReceiptPayload.h"
#include "QXExtensionSDK/runtime/Logger.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/Locale.h"

namespace QXExtensionSDK {

namespace {

using platform::Dictionary;
using platform::Value;

// What the receipts of one payload share.
struct Sender {
  std::optional<std::string_view> deviceId;
  std::optional<std::string_view> sessionId;
  std::string receiptDateUtc;
};

Sender makeSender(const std::optional<AppGroupSDK::AppDeviceInfo>& info) {
  Sender sender;
  sender.receiptDateUtc = receiptDate(platform::Date::now().secondsSince1970);
  if (info) {
    sender.deviceId = info->deviceId();
    sender.sessionId = info->sessionId();
  }
  return sender;
}

void logMissing(std::string_view field) {
  Logger::service().error(LogCategory::deliveryReceipt, "MAMDeliveryReceiptEvent creation failure: ", field,
                          " is missing");
}

std::optional<Value> makeItem(const AppGroupSDK::DeliveryReceiptPNModel& receipt, const Sender& sender) {
  if (!sender.deviceId) {
    logMissing("deviceId");
    return std::nullopt;
  }
  if (!sender.sessionId) {
    logMissing("sessionId");
    return std::nullopt;
  }
  PayloadEntries event{{"eventId", receipt.uuid()},
                       {"sessionId", *sender.sessionId},
                       {"category", "engagement"},
                       {"messageId", receipt.messageId()}};
  addUnlessEmpty(event, "receiptDateUtc", sender.receiptDateUtc);
  addUnlessEmpty(event, "dateTime", receiptDate(receipt.eventDateUtc()));
  if (receipt.propertyBag()) event.emplace_back("propertyBag", *receipt.propertyBag());
  return Dictionary{{"eventType", "RECEIVED"}, {"event", Dictionary::fromEntries(event)}};
}

}  // namespace

MAMDeliveryReceiptPayloadCreator::MAMDeliveryReceiptPayloadCreator(
    std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider)
    : appDeviceInfoProvider_(std::move(appDeviceInfoProvider)) {}

std::optional<Dictionary> MAMDeliveryReceiptPayloadCreator::createPayload(const Receipts& receipts) const {
  if (receipts.empty()) {
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
  if (items.empty()) return std::nullopt;
  const auto& device = platform::Device::current();
  return Dictionary{{"deviceId", *sender.deviceId},
                    {"deviceModel", device.name},
                    {"devicePlatform", "iPhone OS"},
                    {"deviceVersion", device.systemVersion},
                    {"locale", platform::Locale::currentIdentifier()},
                    {"mobileAppName", platform::Bundle::main().bundleIdentifier().value_or("")},
                    {"nodes", payloadNodes(items)}};
}

}  // namespace QXExtensionSDK
