#pragma once

#include <cstdint>
#include <memory>

#include "AppGroupSDK/records/DeliveryReceiptsModelStore.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptStoring.h"
#include "QXExtensionSDK/receipts/ReceiptFile.h"

namespace QXExtensionSDK {

// The receipt list of one module, in the module-scoped record of the shared container. What has been read or
// stored is kept in memory, untrimmed, and is what later calls go by; the file is read again only while the
// list is empty, and after another run of this process has written it.
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

  const std::unique_ptr<const AppGroupSDK::DeliveryReceiptsModelStoreProtocol> store_;
  const std::shared_ptr<ReceiptFile> file_;
  Receipts storedReceipts_;
  std::uint64_t writesSeen_ = 0;
};

}  // namespace QXExtensionSDK
