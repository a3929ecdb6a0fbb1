#include "QXExtensionSDK/receipts/DeliveryReceiptsPNStore.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "QXExtensionSDK/runtime/Logger.h"
#include "platform/foundation/FatalError.h"

namespace QXExtensionSDK {

namespace {

using AppGroupSDK::DataStoreStatus;
using AppGroupSDK::DeliveryReceiptsModel;
using AppGroupSDK::PNStatus;

std::int64_t rawValue(PNStatus status) {
  return static_cast<std::int64_t>(status);
}

template <typename... Pieces>
void log(const Pieces&... pieces) {
  Logger::service().debug(LogCategory::deliveryReceipt, pieces...);
}

std::unordered_set<std::string_view> uniqueIds(const Receipts& receipts) {
  std::unordered_set<std::string_view> ids;
  for (const auto& receipt : receipts) {
    if (ids.insert(receipt.uuid()).second) continue;
    platform::fatalError("Duplicate values for key: '" + receipt.uuid() + "'");
  }
  return ids;
}

}  // namespace

DeliveryReceiptsPNStore::DeliveryReceiptsPNStore(
    std::unique_ptr<const AppGroupSDK::DeliveryReceiptsModelStoreProtocol> store,
    std::shared_ptr<ReceiptFile> file)
    : store_(std::move(store)), file_(std::move(file)) {}

const Receipts& DeliveryReceiptsPNStore::load() {
  if (writesSeen_ != file_->writes) storedReceipts_.clear();
  writesSeen_ = file_->writes;
  if (!storedReceipts_.empty()) return storedReceipts_;
  if (auto model = store_->fetchModuleScopedModelData().value()) storedReceipts_ = std::move(*model).pnData();
  if (storedReceipts_.empty()) log("No DeliveryReceipts in store");
  return storedReceipts_;
}

DataStoreStatus DeliveryReceiptsPNStore::save(const DeliveryReceiptsModel& model) {
  const auto result = store_->saveModuleScopedModelData(model);
  if (result == DataStoreStatus::success) writesSeen_ = ++file_->writes;
  return result;
}

DataStoreStatus DeliveryReceiptsPNStore::saveAll() {
  DeliveryReceiptsModel model(std::move(storedReceipts_));
  const auto result = save(model);
  storedReceipts_ = std::move(model).pnData();
  return result;
}

DataStoreStatus DeliveryReceiptsPNStore::saveNewest(std::size_t count) {
  if (count >= storedReceipts_.size()) return saveAll();
  return save(DeliveryReceiptsModel(
      Receipts(std::prev(storedReceipts_.end(), static_cast<std::ptrdiff_t>(count)), storedReceipts_.end())));
}

std::optional<Receipts> DeliveryReceiptsPNStore::fetchAllReceipts() {
  const std::lock_guard lock(file_->mutex);
  const Receipts& stored = load();
  return stored.empty() ? std::nullopt : std::optional(stored);
}

DataStoreStatus DeliveryReceiptsPNStore::storeReceipts(const Receipts& receipts, std::size_t maxCount) {
  const std::lock_guard lock(file_->mutex);
  const std::size_t storedCount = load().size();
  // Storing nothing carries nothing over.
  const std::size_t carriedOver = receipts.empty() ? 0 : storedCount;
  log("All receipts count before storing any new receipt is ", carriedOver);
  storedReceipts_.insert(storedReceipts_.end(), receipts.begin(), receipts.end());
  const auto result = saveNewest(std::min(carriedOver + receipts.size(), maxCount));
  log("DeliveryReceipts ", ReceiptListText{receipts}, " saved with result: ", result);
  return result;
}

std::optional<Receipts> DeliveryReceiptsPNStore::fetchReceipts(PNStatus status) {
  const std::lock_guard lock(file_->mutex);
  const Receipts& stored = load();
  if (stored.empty()) return std::nullopt;
  Receipts kept;
  std::ranges::copy_if(stored, std::back_inserter(kept),
                       [status](const auto& receipt) { return receipt.status() == status; });
  log("DeliveryReceipts fetched for status: ", rawValue(status), " with result: ", ReceiptListText{kept});
  return kept;
}

std::optional<DataStoreStatus> DeliveryReceiptsPNStore::updateStatus(const Receipts& receipts,
                                                                     PNStatus status) {
  const std::lock_guard lock(file_->mutex);
  if (load().empty()) {
    log("No DeliveryReceipts to update status: ", rawValue(status));
    return std::nullopt;
  }
  const auto ids = uniqueIds(receipts);
  for (auto& stored : storedReceipts_) {
    if (ids.contains(stored.uuid())) stored.setStatus(status);
  }
  const auto result = saveAll();
  log("DeliveryReceipts ", ReceiptListText{receipts}, " updated status: ", rawValue(status),
      " with result: ", result);
  return result;
}

void DeliveryReceiptsPNStore::removeReceipts(const Receipts& receipts) {
  const std::lock_guard lock(file_->mutex);
  if (load().empty()) return log("No DeliveryReceipts to remove");
  const auto ids = uniqueIds(receipts);
  std::erase_if(storedReceipts_, [&ids](const auto& stored) { return ids.contains(stored.uuid()); });
  const auto result = saveAll();
  log("DeliveryReceipts ", ReceiptListText{receipts}, " saved with result: ", result);
}

}  // namespace QXExtensionSDK
