#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QXExtensionSDK/receipts/DeliveryReceiptService.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptsPNStore.h"
#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

// The most receipts that one request carries.
inline constexpr std::size_t maxReceiptsPerRequest = 150;

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

// The repository over a receipt list. What it hands out to be sent stays its run's own until the outcome is
// known or the run ends.
class DeliveryReceiptRepositoryManager final : public DeliveryReceiptRepository {
 public:
  // `run`: that of the list.
  DeliveryReceiptRepositoryManager(std::unique_ptr<DeliveryReceiptStoring> storing,
                                   std::shared_ptr<ReceiptRun> run);

  AppGroupSDK::DataStoreStatus storeReceipt(
      std::string_view messageId, const std::optional<std::string>& requestId, std::string_view messageType,
      const std::optional<QXPlatform::Dictionary>& propertyBag) override;
  std::optional<Receipts> fetchPendingReceipts() override;
  void handleSendResult(bool succeeded, const Receipts& receipts,
                        const ReceiptCompletion& completion) override;

 private:
  const std::unique_ptr<DeliveryReceiptStoring> storing_;
  const std::shared_ptr<ReceiptRun> run_;
};

}  // namespace QXExtensionSDK
