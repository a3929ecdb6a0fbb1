#pragma once

#include <optional>
#include <string>

#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

// What a push says of itself for its receipt. Immutable.
struct DeliveryReceiptData {
  std::string messageId;
  std::optional<QXPlatform::Dictionary> propertyBag;
  std::optional<std::string> requestId;
  std::string messageType;
};

// Reads the message identity from a push. Any thread.
class DeliveryReceiptDataParsing {
 public:
  virtual ~DeliveryReceiptDataParsing() = default;
  virtual std::optional<DeliveryReceiptData> parse(const QXPlatform::Dictionary& userInfo) const = 0;
};

// Nothing, after one error line, without a message id or a message type; what else is missing or of another
// type than it should be is left out.
class DeliveryReceiptDataParser final : public DeliveryReceiptDataParsing {
 public:
  std::optional<DeliveryReceiptData> parse(const QXPlatform::Dictionary& userInfo) const override;
};

}  // namespace QXExtensionSDK
