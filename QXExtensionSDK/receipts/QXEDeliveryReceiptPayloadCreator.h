#pragma once

#include <memory>
#include <string_view>

#include "QXExtensionSDK/receipts/ReceiptPayloadCreator.h"

namespace QXExtensionSDK {

// One receipt as the engagement module reports it; refers to texts of others. A date that has no form is
// empty.
struct DeliveryReceiptEvent {
  std::string_view uuid;
  std::string_view applicationId;
  std::string_view deviceId;
  std::string_view messageId;
  std::string_view messageType;
  std::string_view propertyBag;  // JSON text
  std::string_view requestId;    // empty when the push had none
  std::string_view receiptDateUtc;
  std::string_view eventDateUtc;

  void addTo(ReceiptItems& items) const;
};

// The engagement module's analytic events.
class QXEDeliveryReceiptPayloadCreator final : public ReceiptPayloadCreator {
 public:
  explicit QXEDeliveryReceiptPayloadCreator(std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider);

 private:
  std::optional<std::string_view> missingField(const std::optional<Info>& info) const override;
  std::string_view eventName() const override { return "DeliveryReceiptEvent"; }
  void addEvent(ReceiptItems& items, const AppGroupSDK::DeliveryReceiptPNModel& receipt, const Info& info,
                std::string_view receiptDateUtc) const override;
  QXPlatform::Dictionary makeBody(const Info& info, QXPlatform::Value nodes) const override;
};

}  // namespace QXExtensionSDK
