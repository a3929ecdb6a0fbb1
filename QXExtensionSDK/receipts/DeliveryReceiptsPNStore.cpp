#include "QXExtensionSDK/receipts/DeliveryReceiptsPNStore.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/FatalError.h"

namespace QXExtensionSDK {

namespace {

using AppGroupSDK::DataStoreStatus;
using AppGroupSDK::DeliveryReceiptPNModel;
using AppGroupSDK::DeliveryReceiptsModel;
using AppGroupSDK::PNStatus;

// Without what surrounds the receipts.
constexpr std::size_t kRoomForReceipts = kMaxReceiptListBytes - 64;

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
    QXPlatform::fatalError("Duplicate values for key: '" + receipt.uuid() + "'");
  }
  return ids;
}

std::size_t sizeOf(const std::optional<std::string>& text) {
  return text ? text->size() : 0;
}

// No receipt is longer in the file than this, every character being escaped.
std::size_t largestSize(const DeliveryReceiptPNModel& receipt) {
  constexpr std::size_t kNamesAndNumbers = 256;
  constexpr std::size_t kLongestEscape = 6;
  const std::size_t texts = receipt.uuid().size() + receipt.messageId().size() + sizeOf(receipt.requestId()) +
                            receipt.messageType().size() + sizeOf(receipt.propertyBag());
  return kNamesAndNumbers + kLongestEscape * texts;
}

// Whether the receipts fit without any need to encode them for an answer.
bool surelyFit(std::span<const DeliveryReceiptPNModel> receipts) {
  std::size_t room = kRoomForReceipts;
  for (const auto& receipt : receipts) {
    const std::size_t size = largestSize(receipt);
    if (size > kMaxReceiptBytes || size > room) return false;
    room -= size;
  }
  return true;
}

// What the receipt takes in the file. One that cannot be encoded takes nothing: saving will tell.
std::size_t encodedSize(const DeliveryReceiptPNModel& receipt) {
  const auto encoded = QXPlatform::encodeJSON(receipt);
  return encoded ? encoded->size() + 1 : 0;
}

bool fitsAlone(const DeliveryReceiptPNModel& receipt) {
  return encodedSize(receipt) <= kMaxReceiptBytes;
}

Receipts newestThatFit(std::span<const DeliveryReceiptPNModel> receipts) {
  Receipts fitting;
  std::size_t room = kRoomForReceipts;
  for (; !receipts.empty(); receipts = receipts.first(receipts.size() - 1)) {
    const std::size_t size = encodedSize(receipts.back());
    if (size > kMaxReceiptBytes) continue;
    if (size > room) break;
    room -= size;
    fitting.push_back(receipts.back());
  }
  std::ranges::reverse(fitting);
  return fitting;
}

}  // namespace

DeliveryReceiptsPNStore::DeliveryReceiptsPNStore(
    std::unique_ptr<const AppGroupSDK::DeliveryReceiptsModelStoreProtocol> store,
    std::shared_ptr<ReceiptFile> file)
    : store_(std::move(store)), file_(std::move(file)) {}

const Receipts& DeliveryReceiptsPNStore::load() {
  if (writesSeen_ != file_->writes || storedReceipts_.empty()) reload();
  if (storedReceipts_.empty()) log("No DeliveryReceipts in store");
  return storedReceipts_;
}

void DeliveryReceiptsPNStore::reload() {
  writesSeen_ = file_->writes;
  const auto isAcknowledged = [this](const auto& receipt) {
    return file_->acknowledged.contains(receipt.uuid());
  };
  auto fetched = store_->fetchModuleScopedModelData();
  if (!fetched.value()) {
    // What was read before is all there is to go by.
    std::erase_if(storedReceipts_, isAcknowledged);
    return;
  }
  Receipts before = std::exchange(storedReceipts_, std::move(fetched).value()->pnData());
  std::erase_if(storedReceipts_, isAcknowledged);
  for (auto& receipt : before) {
    const std::string& id = receipt.uuid();
    const bool isMissing =
        ownIds_.contains(id) && !isAcknowledged(receipt) &&
        std::ranges::find(storedReceipts_, id, &DeliveryReceiptPNModel::uuid) == storedReceipts_.end();
    if (isMissing) storedReceipts_.push_back(std::move(receipt));
  }
}

DataStoreStatus DeliveryReceiptsPNStore::save(const DeliveryReceiptsModel& model) {
  writesSeen_ = ++file_->writes;
  return store_->saveModuleScopedModelData(model);
}

DataStoreStatus DeliveryReceiptsPNStore::saveAll() {
  return saveNewest(storedReceipts_.size());
}

DataStoreStatus DeliveryReceiptsPNStore::saveNewest(std::size_t count) {
  const std::span newest = std::span(storedReceipts_).last(std::min(count, storedReceipts_.size()));
  if (newest.size() == storedReceipts_.size() && surelyFit(newest)) {
    DeliveryReceiptsModel model(std::move(storedReceipts_));
    const auto result = save(model);
    storedReceipts_ = std::move(model).pnData();
    return result;
  }
  Receipts fitting = newestThatFit(newest);
  const std::size_t dropped = newest.size() - fitting.size();
  if (dropped > 0) {
    Logger::service().error(LogCategory::deliveryReceipt,
                            "DeliveryReceipts dropped for want of room: ", dropped);
  }
  return save(DeliveryReceiptsModel(std::move(fitting)));
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
  for (const auto& receipt : receipts) ownIds_.insert(receipt.uuid());
  const auto saved = saveNewest(std::min(carriedOver + receipts.size(), maxCount));
  const bool isWhole = surelyFit(receipts) || std::ranges::all_of(receipts, fitsAlone);
  const auto result = isWhole ? saved : DataStoreStatus::writeFailed;
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
  for (const auto& receipt : receipts) file_->acknowledged.insert(receipt.uuid());
  const auto result = saveAll();
  log("DeliveryReceipts ", ReceiptListText{receipts}, " saved with result: ", result);
}

}  // namespace QXExtensionSDK
