#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QXExtensionSDK/receipts/AppDeviceInfoProvider.h"
#include "QXExtensionSDK/receipts/ReceiptListText.h"
#include "QXExtensionSDK/receipts/ReceiptPayload.h"
#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

// Turns receipts into the body of one module's request; a module adds its event and what surrounds them.
// Used from one thread at a time.
class ReceiptPayloadCreator {
 public:
  virtual ~ReceiptPayloadCreator() = default;

  // A receipt for which a value is not stored is skipped with an error line. Nothing without any event: such
  // a body would be acknowledged, and the receipts would be gone.
  std::optional<QXPlatform::Dictionary> createPayload(const Receipts& receipts) const;

 protected:
  using Info = AppGroupSDK::AppDeviceInfo;

  explicit ReceiptPayloadCreator(std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider);

 private:
  // What an event lacks to be made, as named in the error line; nothing when it can be made.
  virtual std::optional<std::string_view> missingField(const std::optional<Info>& info) const = 0;
  // How the error line begins.
  virtual std::string_view eventName() const = 0;
  virtual void addEvent(ReceiptItems& items, const AppGroupSDK::DeliveryReceiptPNModel& receipt,
                        const Info& info, std::string_view receiptDateUtc) const = 0;
  virtual QXPlatform::Dictionary makeBody(const Info& info, QXPlatform::Value nodes) const = 0;

  const std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider_;
};

}  // namespace QXExtensionSDK
