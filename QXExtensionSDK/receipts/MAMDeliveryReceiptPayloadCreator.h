#pragma once

#include <memory>

#include "QXExtensionSDK/receipts/ReceiptPayloadCreator.h"

namespace QXExtensionSDK {

// The mobile-app-messaging module's engagement events.
class MAMDeliveryReceiptPayloadCreator final : public ReceiptPayloadCreator {
 public:
  explicit MAMDeliveryReceiptPayloadCreator(std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider);

 private:
  std::optional<std::string_view> missingField(const std::optional<Info>& info) const override;
  std::string_view eventName() const override { return "MAMDeliveryReceiptEvent"; }
  void addEvent(ReceiptItems& items, const AppGroupSDK::DeliveryReceiptPNModel& receipt, const Info& info,
                std::string_view receiptDateUtc) const override;
  QXPlatform::Dictionary makeBody(const Info& info, QXPlatform::Value nodes) const override;
};

}  // namespace QXExtensionSDK
