#include "QXExtensionSDK/receipts/DeliveryReceiptsPNStore.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/RawValues.h"

namespace QXExtensionSDK {

namespace {

using AppGroupSDK::DataStoreStatus;
using AppGroupSDK::DeliveryReceiptPNModel;
using AppGroupSDK::DeliveryReceiptsModel;
using AppGroupSDK::PNStatus;

// Without what surrounds the receipts.
constexpr std::size_t kRoomForReceipts = kMaxReceiptListBytes - 64;

template <LogPiece... Pieces>
void log(Pieces&&... pieces) {
  Logger::service().debug(LogCategory::deliveryReceipt, pieces...);
}

template <LogPiece... Pieces>
void logError(Pieces&&... pieces) {
  Logger::service().error(LogCategory::deliveryReceipt, pieces...);
}

ReceiptIds uniqueIds(const Receipts& receipts) {
  ReceiptIds ids(receipts.size());
  for (const auto& receipt : receipts) {
    const std::size_t unique = ids.count();
    if (ids.add(receipt.uuid()) == unique) continue;
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
    std::shared_ptr<ReceiptRun> run)
    : store_(std::move(store)), run_(std::move(run)) {}

const Receipts& DeliveryReceiptsPNStore::load() {
  if (storedReceipts_.empty()) {
    if (auto model = store_->fetchModuleScopedModelData().value()) adopt(std::move(*model).pnData());
  }
  if (storedReceipts_.empty()) log("No DeliveryReceipts in store");
  return storedReceipts_;
}

void DeliveryReceiptsPNStore::adopt(Receipts inFile) {
  const std::size_t surplus = inFile.size() - std::min(inFile.size(), maxStoredReceipts);
  inFile.erase(inFile.begin(), inFile.begin() + static_cast<std::ptrdiff_t>(surplus));
  const Receipts before = std::exchange(storedReceipts_, std::move(inFile));
  std::ranges::copy_if(before, std::back_inserter(storedReceipts_),
                       [this](const auto& receipt) { return unsaved_.contains(receipt.uuid()); });
  const ReceiptRun::Acknowledged acknowledged(*run_);
  std::erase_if(storedReceipts_, [&](const auto& receipt) {
    if (!acknowledged.contains(receipt.uuid())) return false;
    acknowledged_.add(receipt.uuid());
    return true;
  });
}

DataStoreStatus DeliveryReceiptsPNStore::save(const Change& change) {
  bool isChanged = false;
  bool isWhole = false;
  std::size_t dropped = 0;
  std::optional<std::string> setAsideAs;
  DeliveryReceiptsModel written{Receipts()};
  const auto status = store_->updateModuleScopedModelData(
      version_, [&](std::optional<AppGroupSDK::StoredRecord<DeliveryReceiptsModel>> found) -> const auto& {
        if (found) {
          setAsideAs = std::move(found->setAsideAs);
          adopt(found->value ? std::move(*found->value).pnData() : Receipts());
        }
        isChanged = true;
        const std::size_t wanted = change();
        const std::size_t count = std::min(wanted, storedReceipts_.size());
        const auto newest = std::span(std::as_const(storedReceipts_)).last(count);
        isWhole = count == storedReceipts_.size() && surelyFit(newest);
        written.setPnData(isWhole ? std::move(storedReceipts_) : newestThatFit(newest));
        dropped = count - written.pnData().size();
        return written;
      });
  if (isWhole) storedReceipts_ = std::move(written).pnData();
  if (!isChanged) change();
  if (status == DataStoreStatus::success) noteSaved();
  if (setAsideAs) logError("DeliveryReceipts that cannot be read are kept in ", *setAsideAs);
  if (dropped > 0) logError("DeliveryReceipts dropped for want of room: ", dropped);
  return status;
}

void DeliveryReceiptsPNStore::noteSaved() {
  unsaved_ = {};
  run_->removed(std::exchange(acknowledged_, {}));
}

std::optional<Receipts> DeliveryReceiptsPNStore::fetchAllReceipts() {
  const Receipts& stored = load();
  return stored.empty() ? std::nullopt : std::optional(stored);
}

DataStoreStatus DeliveryReceiptsPNStore::storeReceipts(const Receipts& receipts, std::size_t maxCount) {
  std::size_t storedCount = 0;
  std::size_t carriedOver = 0;
  const auto saved = save([&] {
    storedCount = storedReceipts_.size();
    // Storing nothing carries nothing over.
    carriedOver = receipts.empty() ? 0 : storedCount;
    storedReceipts_.insert(storedReceipts_.end(), receipts.begin(), receipts.end());
    for (const auto& receipt : receipts) unsaved_.add(receipt.uuid());
    return std::min(carriedOver + receipts.size(), maxCount);
  });
  if (storedCount == 0) log("No DeliveryReceipts in store");
  log("All receipts count before storing any new receipt is ", carriedOver);
  const bool isWhole = surelyFit(receipts) || std::ranges::all_of(receipts, fitsAlone);
  const auto result = isWhole ? saved : DataStoreStatus::writeFailed;
  log("DeliveryReceipts ", ReceiptListText{receipts}, " saved with result: ", result);
  return result;
}

std::optional<Receipts> DeliveryReceiptsPNStore::fetchReceipts(PNStatus status) {
  const Receipts& stored = load();
  if (stored.empty()) return std::nullopt;
  const auto isWanted = [status](const auto& receipt) { return receipt.status() == status; };
  Receipts kept;
  kept.reserve(static_cast<std::size_t>(std::ranges::count_if(stored, isWanted)));
  std::ranges::copy_if(stored, std::back_inserter(kept), isWanted);
  log("DeliveryReceipts fetched for status: ", QXPlatform::rawValue(status),
      " with result: ", ReceiptListText{kept});
  return kept;
}

std::optional<DataStoreStatus> DeliveryReceiptsPNStore::updateStatus(const Receipts& receipts,
                                                                     PNStatus status) {
  if (load().empty()) {
    log("No DeliveryReceipts to update status: ", QXPlatform::rawValue(status));
    return std::nullopt;
  }
  const auto ids = uniqueIds(receipts);
  const auto result = save([&] {
    for (auto& stored : storedReceipts_) {
      if (ids.contains(stored.uuid())) stored.setStatus(status);
    }
    return storedReceipts_.size();
  });
  log("DeliveryReceipts ", ReceiptListText{receipts}, " updated status: ", QXPlatform::rawValue(status),
      " with result: ", result);
  return result;
}

void DeliveryReceiptsPNStore::removeReceipts(const Receipts& receipts) {
  if (load().empty()) return log("No DeliveryReceipts to remove");
  const auto ids = uniqueIds(receipts);
  run_->acknowledge(ids);
  const auto result = save([&] {
    Receipts kept;
    kept.reserve(storedReceipts_.size());
    for (auto& stored : storedReceipts_) {
      if (!ids.contains(stored.uuid())) kept.push_back(std::move(stored));
    }
    removedReceipts_ = std::exchange(storedReceipts_, std::move(kept));
    return storedReceipts_.size();
  });
  if (result == DataStoreStatus::success) {
    run_->removed(ids);
  } else {
    for (std::size_t number = 0; number < ids.count(); ++number) acknowledged_.add(ids[number]);
  }
  log("DeliveryReceipts ", ReceiptListText{receipts}, " saved with result: ", result);
}

}  // namespace QXExtensionSDK
