#pragma once

#include <cstddef>
#include <optional>

#include "AppGroupSDK/store/DataStoreStatus.h"
#include "QXExtensionSDK/receipts/ReceiptListText.h"

namespace QXExtensionSDK {

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

}  // namespace QXExtensionSDK
