#include "QXExtensionSDK/receipts/DeliveryReceiptRepository.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "QXExtensionSDK/payload/JSONParser.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/Date.h"
#include "QXPlatform/foundation/UUID.h"

namespace QXExtensionSDK {

using AppGroupSDK::DataStoreStatus;
using AppGroupSDK::DeliveryReceiptPNModel;
using AppGroupSDK::PNStatus;

DeliveryReceiptRepositoryManager::DeliveryReceiptRepositoryManager(
    std::unique_ptr<DeliveryReceiptStoring> storing, std::shared_ptr<ReceiptRun> run)
    : storing_(std::move(storing)), run_(std::move(run)) {}

DataStoreStatus DeliveryReceiptRepositoryManager::storeReceipt(
    std::string_view messageId, const std::optional<std::string>& requestId, std::string_view messageType,
    const std::optional<QXPlatform::Dictionary>& propertyBag) {
  const double eventDateUtc = QXPlatform::Date::now().secondsSince1970;
  auto propertyText = JSONParser().jsonString(propertyBag.value_or(QXPlatform::Dictionary()));
  return storing_->storeReceipts({DeliveryReceiptPNModel(QXPlatform::makeUUIDString(), std::string(messageId),
                                                         requestId, std::string(messageType), eventDateUtc,
                                                         std::move(propertyText), PNStatus::pending)},
                                 maxStoredReceipts);
}

std::optional<Receipts> DeliveryReceiptRepositoryManager::fetchPendingReceipts() {
  run_->releaseAll();
  Receipts batch = storing_->fetchReceipts(PNStatus::failed).value_or(Receipts());
  Receipts pending = storing_->fetchReceipts(PNStatus::pending).value_or(Receipts());
  if (batch.empty()) batch.swap(pending);
  batch.insert(batch.end(), std::move_iterator(pending.begin()), std::move_iterator(pending.end()));
  // Of a receipt that another writer has put into the file twice one is claimed.
  std::size_t claimed = 0;
  ReceiptRun::Claims claims(*run_);
  const auto isLeftOut = [&](const auto& receipt) {
    if (claimed == maxReceiptsPerRequest || !claims.add(receipt.uuid())) return true;
    ++claimed;
    return false;
  };
  const auto oldest = std::remove_if(batch.rbegin(), batch.rend(), isLeftOut);
  batch.erase(batch.begin(), oldest.base());
  return batch.empty() ? std::nullopt : std::optional(std::move(batch));
}

void DeliveryReceiptRepositoryManager::handleSendResult(bool succeeded, const Receipts& receipts,
                                                        const ReceiptCompletion& completion) {
  const Logger& logger = Logger::service();
  if (succeeded) {
    storing_->removeReceipts(receipts);
    logger.debug(LogCategory::deliveryReceipt, "DeliveryReceipts ", ReceiptListText{receipts}, " sent");
  } else {
    const auto result = storing_->updateStatus(receipts, PNStatus::failed);
    logger.debug(LogCategory::deliveryReceipt, "DeliveryReceipts ", ReceiptListText{receipts},
                 " marked failed with result: ", result.value_or(DataStoreStatus::noData));
  }
  run_->releaseAll();
  completion(succeeded);
}

}  // namespace QXExtensionSDK
