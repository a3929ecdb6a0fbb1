#include "QXExtensionSDK/receipts/QXEDeliveryReceiptRequest.h"

#include <utility>

#include "QXExtensionSDK/receipts/UserAgentProvider.h"

namespace QXExtensionSDK {

ServiceProtocol::Headers QXEDeliveryReceiptRequestHeader::toDictionary() const {
  return {{"User-Agent", UserAgentProvider::userAgent(qxsdkVersion)},
          {"X-Subscriber-Token", subscriberToken},
          {"Authorization", "Bearer " + accessToken},
          {"Content-Type", "application/json"}};
}

QXEDeliveryReceiptRequest::QXEDeliveryReceiptRequest(platform::URL baseURL,
                                                     QXEDeliveryReceiptRequestHeader header,
                                                     platform::Dictionary body)
    : baseURL_(std::move(baseURL)), header_(std::move(header)), body_(std::move(body)) {}

}  // namespace QXExtensionSDK
