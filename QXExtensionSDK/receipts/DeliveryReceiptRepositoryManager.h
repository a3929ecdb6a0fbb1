#pragma once

#include <memory>

#include "QXExtensionSDK/receipts/DeliveryReceiptRepository.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptStoring.h"
#include "QXExtensionSDK/receipts/ReceiptFile.h"

namespace QXExtensionSDK {

// The repository over a receipt list. What it hands out to be sent stays its own until the outcome is known
// or it goes.
class DeliveryReceiptRepositoryManager final : public DeliveryReceiptRepository {
 public:
  // `file`: that of the list.
  DeliveryReceiptRepositoryManager(std::unique_ptr<DeliveryReceiptStoring> storing,
                                   std::shared_ptr<ReceiptFile> file);
  ~DeliveryReceiptRepositoryManager() override;
  DeliveryReceiptRepositoryManager(const DeliveryReceiptRepositoryManager&) = delete;
  DeliveryReceiptRepositoryManager& operator=(const DeliveryReceiptRepositoryManager&) = delete;

  AppGroupSDK::DataStoreStatus storeReceipt(
      std::string_view messageId, const std::optional<std::string>& requestId, std::string_view messageType,
      const std::optional<QXPlatform::Dictionary>& propertyBag) override;
  std::optional<Receipts> fetchPendingReceipts() override;
  void handleSendResult(bool succeeded, const Receipts& receipts,
                        const ReceiptCompletion& completion) override;

 private:
  void record(bool succeeded, const Receipts& receipts);

  const std::unique_ptr<DeliveryReceiptStoring> storing_;
  const std::shared_ptr<ReceiptFile> file_;
};

}  // namespace QXExtensionSDK
