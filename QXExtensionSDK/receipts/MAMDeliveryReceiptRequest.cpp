#include "QXExtensionSDK/receipts/MAMDeliveryReceiptRequest.h"

#include <utility>

namespace QXExtensionSDK {

ServiceProtocol::Headers MAMDeliveryReceiptRequestHeader::toDictionary() const {
  return {{"x-vlto-mobile-app-id", appId},
          {"x-vlto-tenant-id", tenantId},
          {"Authorization", "Bearer " + accessToken},
          {"Content-Type", "application/json"}};
}

MAMDeliveryReceiptRequest::MAMDeliveryReceiptRequest(platform::URL baseURL,
                                                     MAMDeliveryReceiptRequestHeader header,
                                                     platform::Dictionary body)
    : baseURL_(std::move(baseURL)), header_(std::move(header)), body_(std::move(body)) {}

}  // namespace QXExtensionSDK
