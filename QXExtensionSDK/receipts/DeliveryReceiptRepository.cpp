#include "QXExtensionSDK/receipts/DeliveryReceiptRepository.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_set>
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
  Receipts candidates = storing_->fetchReceipts(PNStatus::failed).value_or(Receipts());
  if (auto pending = storing_->fetchReceipts(PNStatus::pending)) {
    std::ranges::move(*pending, std::back_inserter(candidates));
  }
  Receipts batch;
  // Another writer may have put a receipt into the file twice.
  std::unordered_set<std::string> taken;
  while (!candidates.empty() && batch.size() < maxReceiptsPerRequest) {
    const std::string& uuid = candidates.back().uuid();
    if (taken.insert(uuid).second && run_->claim(uuid)) batch.push_back(std::move(candidates.back()));
    candidates.pop_back();
  }
  if (batch.empty()) return std::nullopt;
  std::ranges::reverse(batch);
  return batch;
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
