#include "AppGroupSDK/records/DeliveryReceiptPNModel.h"

#include "AppGroupSDK/records/JSONString.h"

namespace AppGroupSDK {

namespace {

QXPlatform::Value valueOrNull(const std::optional<std::string>& text) {
  return text ? QXPlatform::Value(*text) : QXPlatform::Value();
}

}  // namespace

std::string DeliveryReceiptPNModel::description() const {
  return jsonString({{"uuid", uuid_},
                     {"messageId", messageId_},
                     {"requestId", valueOrNull(requestId_)},
                     {"messageType", messageType_},
                     {"eventDateUtc", eventDateUtc_},
                     {"propertyBag", valueOrNull(propertyBag_)},
                     {"status", QXPlatform::rawValue(status_)}})
      .value_or("");
}

}  // namespace AppGroupSDK
