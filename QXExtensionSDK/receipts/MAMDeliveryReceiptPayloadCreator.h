#pragma once

#include <memory>
#include <optional>

#include "QXExtensionSDK/receipts/AppDeviceInfoProvider.h"
#include "QXExtensionSDK/receipts/ReceiptListText.h"
#include "platform/foundation/Value.h"

namespace QXExtensionSDK {

// Turns receipts into the mobile-app-messaging module's engagement events. Used from one thread at a time.
class MAMDeliveryReceiptPayloadCreator {
 public:
  explicit MAMDeliveryReceiptPayloadCreator(std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider);

  // Nothing for no receipts. Nothing either, after an error line for each, when device or session are not
  // stored: a body without events would be acknowledged, and the receipts would be gone.
  std::optional<platform::Dictionary> createPayload(const Receipts& receipts) const;

 private:
  const std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider_;
};

}  // namespace QXExtensionSDK
