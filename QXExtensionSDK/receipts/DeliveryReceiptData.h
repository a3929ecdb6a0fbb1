#pragma once

#include <optional>
#include <string>

#include "platform/foundation/Value.h"

namespace QXExtensionSDK {

// What a push says of itself for its receipt. Immutable.
struct DeliveryReceiptData {
  std::string messageId;
  std::optional<platform::Dictionary> propertyBag;
  std::optional<std::string> requestId;
  std::string messageType;
};

}  // namespace QXExtensionSDK
