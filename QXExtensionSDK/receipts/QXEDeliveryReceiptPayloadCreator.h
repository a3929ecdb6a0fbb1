#pragma once

#include <memory>
#include <optional>

#include "QXExtensionSDK/receipts/AppDeviceInfoProvider.h"
#include "QXExtensionSDK/receipts/ReceiptListText.h"
#include "QXExtensionSDK/receipts/ReceiptPayload.h"
#include "platform/foundation/Value.h"

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

// Turns receipts into the engagement module's analytic events. Used from one thread at a time.
class QXEDeliveryReceiptPayloadCreator {
 public:
  explicit QXEDeliveryReceiptPayloadCreator(std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider);

  // A receipt for which a value is not stored is skipped with an error line. Nothing without any receipt.
  std::optional<platform::Dictionary> createPayload(const Receipts& receipts) const;

 private:
  const std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider_;
};

}  // namespace QXExtensionSDK
