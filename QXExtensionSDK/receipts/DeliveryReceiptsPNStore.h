#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

#include "AppGroupSDK/records/DeliveryReceiptsModelStore.h"
#include "QXExtensionSDK/receipts/ReceiptIds.h"
#include "QXExtensionSDK/receipts/ReceiptListText.h"
#include "QXExtensionSDK/receipts/ReceiptRun.h"

namespace QXExtensionSDK {

// The most receipts that one module keeps on disk.
inline constexpr std::size_t maxStoredReceipts = 300;
// The room of one module's list on disk. Read, parsed and taken apart it needs several times as much.
inline constexpr std::size_t kMaxReceiptListBytes = std::size_t{2} << 20;
// The room of one receipt in it. A push has 4 KB; one that is made to swell must not push out all others.
inline constexpr std::size_t kMaxReceiptBytes = std::size_t{64} << 10;

// The receipt list of one messaging module. Calls on one object must not overlap; they block until the file
// operation is done.
class DeliveryReceiptStoring {
 public:
  virtual ~DeliveryReceiptStoring() = default;

  // Nothing when there is none.
  virtual std::optional<Receipts> fetchAllReceipts() = 0;
  // Appends; of more than `maxCount` only the newest are written. An empty list empties the file.
  virtual AppGroupSDK::DataStoreStatus storeReceipts(const Receipts& receipts, std::size_t maxCount) = 0;
  // Those of that status, in stored order; nothing when nothing at all is stored.
  virtual std::optional<Receipts> fetchReceipts(AppGroupSDK::PNStatus status) = 0;
  // Nothing when nothing is stored. A uuid that is given twice stops the process, here and below.
  virtual std::optional<AppGroupSDK::DataStoreStatus> updateStatus(const Receipts& receipts,
                                                                   AppGroupSDK::PNStatus status) = 0;
  virtual void removeReceipts(const Receipts& receipts) = 0;
};

// The receipt list of one module, in the module-scoped record of the shared container. What has been read or
// stored is kept in memory, untrimmed, and is what later calls go by. Every change is made to what the file
// holds at that moment: the file is read again when it is no longer what this run has read or written last.
// What this run could not save stays in memory beside it; what a back end has acknowledged does not.
//
// Of more than maxStoredReceipts the newest are read. No more than kMaxReceiptListBytes are written: beyond,
// the oldest receipts are left out. A receipt over kMaxReceiptBytes is never written, and pushes no other
// out.
class DeliveryReceiptsPNStore final : public DeliveryReceiptStoring {
 public:
  DeliveryReceiptsPNStore(std::unique_ptr<const AppGroupSDK::DeliveryReceiptsModelStoreProtocol> store,
                          std::shared_ptr<ReceiptRun> run);

  std::optional<Receipts> fetchAllReceipts() override;
  AppGroupSDK::DataStoreStatus storeReceipts(const Receipts& receipts, std::size_t maxCount) override;
  std::optional<Receipts> fetchReceipts(AppGroupSDK::PNStatus status) override;
  std::optional<AppGroupSDK::DataStoreStatus> updateStatus(const Receipts& receipts,
                                                           AppGroupSDK::PNStatus status) override;
  void removeReceipts(const Receipts& receipts) override;

 private:
  // Changes the list and gives how many of its newest receipts are to be written.
  using Change = std::function<std::size_t()>;

  const Receipts& load();
  void adopt(Receipts inFile);
  AppGroupSDK::DataStoreStatus save(const Change& change);
  void noteSaved();

  const std::unique_ptr<const AppGroupSDK::DeliveryReceiptsModelStoreProtocol> store_;
  const std::shared_ptr<ReceiptRun> run_;
  Receipts storedReceipts_;
  Receipts removedReceipts_;                        // freed with this object, when nobody waits any more
  ReceiptIds unsaved_;                              // those of storedReceipts_ that no save has written
  ReceiptIds acknowledged_;                         // those that the next save is the first to leave out
  std::optional<QXPlatform::FileVersion> version_;  // of the file, when it was last read or written
};

}  // namespace QXExtensionSDK
