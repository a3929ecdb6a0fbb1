#pragma once

#include <memory>
#include <optional>

#include "AppGroupSDK/records/AppDeviceInfo.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptHandler.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptManaging.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptRepository.h"

namespace QXExtensionSDK {

// What the managers of both modules do alike; a module adds how its request is made.
class ReceiptManager : public DeliveryReceiptManaging {
 public:
  bool storeReceipt(const DeliveryReceiptData& data) final;
  void sendReceipts(ReceiptCompletion completion) final;

  // The batch to send; nothing, after a log line, when there is none.
  std::optional<Receipts> pendingReceipts();
  void sendReceipts(Receipts receipts, ReceiptCompletion completion);

 protected:
  // `shortName`: the module's name in log lines.
  ReceiptManager(std::string_view shortName, std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
                 std::unique_ptr<const DeliveryReceiptHandling> receiptHandler);

  // Nothing, after an error line, when none is stored or what is stored is no web address.
  static std::optional<QXPlatform::URL> makeBaseURL(const std::optional<AppGroupSDK::AppDeviceInfo>& info);

 private:
  // The body with these receipts; nothing, after log lines, when a value that it needs is not stored.
  virtual std::optional<QXPlatform::Dictionary> makePayload(const Receipts& receipts) = 0;
  // The same for the request around it.
  virtual std::unique_ptr<const ServiceProtocol> makeRequest(QXPlatform::Dictionary payload) = 0;

  const std::string_view shortName_;
  // Shared with the completions of requests in flight, which may outlive this object.
  const std::shared_ptr<DeliveryReceiptRepository> repositoryManager_;
  const std::unique_ptr<const DeliveryReceiptHandling> receiptHandler_;
};

}  // namespace QXExtensionSDK
