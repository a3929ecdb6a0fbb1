#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

#include "AppGroupSDK/records/DeliveryReceiptsModelStore.h"
#include "QXExtensionSDK/receipts/ReceiptFile.h"
#include "QXExtensionSDK/receipts/ReceiptListText.h"

namespace QXExtensionSDK {

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
// stored is kept in memory, untrimmed, and is what later calls go by; the file is read again only while the
// list is empty, and after another run of this process has written it. What this run itself has stored
// outlives such a reading even if the file does not have it, its save having failed.
//
// No more than kMaxReceiptListBytes are written: beyond, the oldest receipts are left out, as beyond the
// count. A receipt over kMaxReceiptBytes is never written, and pushes no other out.
class DeliveryReceiptsPNStore final : public DeliveryReceiptStoring {
 public:
  // `file`: that of the record behind `store`.
  DeliveryReceiptsPNStore(std::unique_ptr<const AppGroupSDK::DeliveryReceiptsModelStoreProtocol> store,
                          std::shared_ptr<ReceiptFile> file);

  std::optional<Receipts> fetchAllReceipts() override;
  AppGroupSDK::DataStoreStatus storeReceipts(const Receipts& receipts, std::size_t maxCount) override;
  std::optional<Receipts> fetchReceipts(AppGroupSDK::PNStatus status) override;
  std::optional<AppGroupSDK::DataStoreStatus> updateStatus(const Receipts& receipts,
                                                           AppGroupSDK::PNStatus status) override;
  void removeReceipts(const Receipts& receipts) override;

 private:
  // With the file's mutex held.
  const Receipts& load();
  AppGroupSDK::DataStoreStatus save(const AppGroupSDK::DeliveryReceiptsModel& model);
  AppGroupSDK::DataStoreStatus saveAll();
  AppGroupSDK::DataStoreStatus saveNewest(std::size_t count);
  void reload();

  const std::unique_ptr<const AppGroupSDK::DeliveryReceiptsModelStoreProtocol> store_;
  const std::shared_ptr<ReceiptFile> file_;
  Receipts storedReceipts_;
  std::unordered_set<std::string> ownIds_;  // of the receipts that this run has stored
  std::uint64_t writesSeen_ = 0;
};

}  // namespace QXExtensionSDK
