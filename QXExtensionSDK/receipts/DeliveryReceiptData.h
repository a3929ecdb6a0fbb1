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

}  // namespace QXExtensionSDK
