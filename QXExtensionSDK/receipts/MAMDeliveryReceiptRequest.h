#pragma once

#include <string>
#include <string_view>

#include "QXExtensionSDK/receipts/ReceiptRequest.h"
#include "QXExtensionSDK/service/ServiceProtocol.h"

namespace QXExtensionSDK {

// What the mobile-app-messaging module's request says of its sender.
struct MAMDeliveryReceiptRequestHeader {
  static constexpr std::string_view kPath = "/platform/messaging/mobileapp/v1/events/engagement";

  std::string accessToken;
  std::string baseUrl;
  std::string path{kPath};
  std::string appId;
  std::string tenantId;

  ServiceProtocol::Headers toDictionary() const;
};

// The mobile-app-messaging module's request.
using MAMDeliveryReceiptRequest = ReceiptRequest<MAMDeliveryReceiptRequestHeader>;

}  // namespace QXExtensionSDK
