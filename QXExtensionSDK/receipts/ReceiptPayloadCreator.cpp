#include "QXExtensionSDK/receipts/ReceiptPayloadCreator.h"

#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/Date.h"

namespace QXExtensionSDK {

ReceiptPayloadCreator::ReceiptPayloadCreator(std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider)
    : appDeviceInfoProvider_(std::move(appDeviceInfoProvider)) {}

std::optional<QXPlatform::Dictionary> ReceiptPayloadCreator::createPayload(const Receipts& receipts) const {
  if (receipts.empty()) {
    // The text names one module for both; that is how it has always read.
    Logger::service().debug(LogCategory::deliveryReceipt,
                            "No pending receipts to create MAM delivery receipt payload");
    return std::nullopt;
  }
  const auto& info = appDeviceInfoProvider_->appDeviceInfo();
  if (const auto missing = missingField(info)) {
    for (std::size_t skipped = 0; skipped < receipts.size(); ++skipped) {
      Logger::service().error(LogCategory::deliveryReceipt, eventName(), " creation failure: ", *missing,
                              " is missing");
    }
    return std::nullopt;
  }
  const std::string receiptDateUtc = receiptDate(QXPlatform::Date::now().secondsSince1970);
  ReceiptItems items(receipts.size());
  for (const auto& receipt : receipts) addEvent(items, receipt, *info, receiptDateUtc);
  return makeBody(*info, std::move(items).nodes());
}

}  // namespace QXExtensionSDK
