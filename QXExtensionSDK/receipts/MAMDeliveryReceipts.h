#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QXExtensionSDK/receipts/ReceiptManager.h"

namespace QXExtensionSDK {

// The mobile-app-messaging module's receipts: its event and body, its request, and who sends them.

// Engagement events.
class MAMDeliveryReceiptPayloadCreator final : public ReceiptPayloadCreator {
 public:
  using ReceiptPayloadCreator::ReceiptPayloadCreator;

 private:
  std::optional<std::string_view> missingField(const std::optional<Info>& info) const override;
  std::string_view eventName() const override { return "MAMDeliveryReceiptEvent"; }
  void addEvent(ReceiptItems& items, const AppGroupSDK::DeliveryReceiptPNModel& receipt, const Info& info,
                const std::optional<std::string>& receiptDateUtc) const override;
  QXPlatform::Dictionary makeBody(const Info& info, QXPlatform::Value nodes) const override;
};

// What the request says of its sender.
struct MAMDeliveryReceiptRequestHeader {
  std::string accessToken;
  std::string baseUrl;
  std::string path = "/platform/messaging/mobileapp/v1/events/engagement";
  std::string appId;
  std::string tenantId;

  ServiceProtocol::Headers toDictionary() const;
};

using MAMDeliveryReceiptRequest = ReceiptRequest<MAMDeliveryReceiptRequestHeader>;

class MAMDeliveryReceiptManager final : public ModuleReceiptManager<MAMDeliveryReceiptRequestHeader> {
 public:
  // `appId`: the module's application id.
  MAMDeliveryReceiptManager(std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
                            std::unique_ptr<const MAMDeliveryReceiptPayloadCreator> payloadCreator,
                            std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
                            std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider, std::string appId);

  std::string_view description() const override { return "MAMDeliveryReceiptManager"; }

 private:
  std::optional<MAMDeliveryReceiptRequestHeader> makeHeader(const std::optional<Info>& info) const override;

  const std::string appId_;
};

}  // namespace QXExtensionSDK
