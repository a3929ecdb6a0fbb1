#include "QXExtensionSDK/receipts/QXEDeliveryReceiptRequest.h"

#include "QXExtensionSDK/receipts/UserAgentProvider.h"

namespace QXExtensionSDK {

ServiceProtocol::Headers QXEDeliveryReceiptRequestHeader::toDictionary() const {
  return {{"User-Agent", UserAgentProvider::userAgent(qxsdkVersion)},
          {"X-Subscriber-Token", subscriberToken},
          {"Authorization", "Bearer " + accessToken},
          {"Content-Type", "application/json"}};
}

}  // namespace QXExtensionSDK
