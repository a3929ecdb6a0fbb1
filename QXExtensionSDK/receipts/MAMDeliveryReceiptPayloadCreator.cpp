#include "QXExtensionSDK/receipts/MAMDeliveryReceiptPayloadCreator.h"

#include <utility>

#include "QXExtensionSDK/receipts/ReceiptPayload.h"
#include "QXExtensionSDK/runtime/Logger.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/Locale.h"

namespace QXExtensionSDK {

namespace {

using platform::Dictionary;

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

void addItem(ReceiptItems& items, const AppGroupSDK::DeliveryReceiptPNModel& receipt, const Sender& sender) {
  if (!sender.deviceId) return logMissing("deviceId");
  if (!sender.sessionId) return logMissing("sessionId");
  const std::string eventDateUtc = receiptDate(receipt.eventDateUtc());
  items.add("RECEIVED", {{"eventId", receipt.uuid()},
                         {"sessionId", sender.sessionId},
                         {"category", "engagement"},
                         {"messageId", receipt.messageId()},
                         {"receiptDateUtc", unlessEmpty(sender.receiptDateUtc)},
                         {"dateTime", unlessEmpty(eventDateUtc)},
                         {"propertyBag", receipt.propertyBag()}});
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
  ReceiptItems items(receipts.size());
  for (const auto& receipt : receipts) addItem(items, receipt, sender);
  if (items.empty()) return std::nullopt;
  const auto& device = platform::Device::current();
  return Dictionary{{"deviceId", *sender.deviceId},
                    {"deviceModel", device.name},
                    {"devicePlatform", "iPhone OS"},
                    {"deviceVersion", device.systemVersion},
                    {"locale", platform::Locale::currentIdentifier()},
                    {"mobileAppName", platform::Bundle::main().bundleIdentifier().value_or("")},
                    {"nodes", std::move(items).nodes()}};
}

}  // namespace QXExtensionSDK
