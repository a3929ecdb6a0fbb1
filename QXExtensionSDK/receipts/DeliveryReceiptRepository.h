#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "AppGroupSDK/store/DataStoreStatus.h"
#include "QXExtensionSDK/receipts/ReceiptListText.h"
#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

// The most receipts that one module keeps on disk, and that one request carries.
inline constexpr std::size_t maxStoredReceipts = 300;
inline constexpr std::size_t maxReceiptsPerRequest = 150;

// Told once whether a module's receipts have reached the back end; on any thread.
using ReceiptCompletion = std::function<void(bool succeeded)>;

// Makes receipts, chooses which to send, and records what became of them, for one messaging module. Calls on
// one object must not overlap; they block until the file operation is done.
class DeliveryReceiptRepository {
 public:
  virtual ~DeliveryReceiptRepository() = default;

  virtual AppGroupSDK::DataStoreStatus storeReceipt(
      std::string_view messageId, const std::optional<std::string>& requestId, std::string_view messageType,
      const std::optional<QXPlatform::Dictionary>& propertyBag) = 0;
  // The batch to send, failed ones first; nothing when there is nothing to send. What another run of this
  // process is sending is left out.
  virtual std::optional<Receipts> fetchPendingReceipts() = 0;
  // Removes what was acknowledged, marks as failed what was not, then calls the completion.
  virtual void handleSendResult(bool succeeded, const Receipts& receipts,
                                const ReceiptCompletion& completion) = 0;
};

}  // namespace QXExtensionSDK
