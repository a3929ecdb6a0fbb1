#include "QXExtensionSDK/receipts/MAMDeliveryReceiptRequest.h"

namespace QXExtensionSDK {

ServiceProtocol::Headers MAMDeliveryReceiptRequestHeader::toDictionary() const {
  return {{"x-vlto-mobile-app-id", appId},
          {"x-vlto-tenant-id", tenantId},
          {"Authorization", "Bearer " + accessToken},
          {"Content-Type", "application/json"}};
}

}  // namespace QXExtensionSDK
