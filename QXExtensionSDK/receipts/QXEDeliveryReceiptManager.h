#pragma once

#include <memory>
#include <optional>

#include "QXExtensionSDK/receipts/AppDeviceInfoProvider.h"
#include "QXExtensionSDK/receipts/QXEDeliveryReceiptPayloadCreator.h"
#include "QXExtensionSDK/receipts/QXEDeliveryReceiptRequest.h"
#include "QXExtensionSDK/receipts/ReceiptManager.h"

namespace QXExtensionSDK {

// The engagement module's receipts.
class QXEDeliveryReceiptManager final : public ReceiptManager {
 public:
  QXEDeliveryReceiptManager(std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
                            QXEDeliveryReceiptPayloadCreator payloadCreator,
                            std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
                            std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider);

  std::string_view description() const override { return "QXEDeliveryReceiptManager"; }

 private:
  std::optional<QXPlatform::Dictionary> makePayload(const Receipts& receipts) override;
  std::unique_ptr<const ServiceProtocol> makeRequest(QXPlatform::Dictionary payload) override;
  std::optional<QXEDeliveryReceiptRequestHeader> makeHeader();

  const QXEDeliveryReceiptPayloadCreator payloadCreator_;
  const std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider_;
};

}  // namespace QXExtensionSDK
