#pragma once

#include <memory>
#include <optional>
#include <string>

#include "QXExtensionSDK/receipts/AppDeviceInfoProvider.h"
#include "QXExtensionSDK/receipts/MAMDeliveryReceiptPayloadCreator.h"
#include "QXExtensionSDK/receipts/MAMDeliveryReceiptRequest.h"
#include "QXExtensionSDK/receipts/ReceiptManager.h"

namespace QXExtensionSDK {

// The mobile-app-messaging module's receipts.
class MAMDeliveryReceiptManager final : public ReceiptManager {
 public:
  // `appId`: the module's application id.
  MAMDeliveryReceiptManager(std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
                            MAMDeliveryReceiptPayloadCreator payloadCreator,
                            std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
                            std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider, std::string appId);

  std::string_view description() const override { return "MAMDeliveryReceiptManager"; }

 private:
  std::optional<QXPlatform::Dictionary> makePayload(const Receipts& receipts) override;
  std::unique_ptr<const ServiceProtocol> makeRequest(QXPlatform::Dictionary payload) override;
  std::optional<MAMDeliveryReceiptRequestHeader> makeHeader();

  const MAMDeliveryReceiptPayloadCreator payloadCreator_;
  const std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider_;
  const std::string appId_;
};

}  // namespace QXExtensionSDK
