#pragma once

#include <string>
#include <string_view>

#include "QXExtensionSDK/receipts/ReceiptRequest.h"
#include "QXExtensionSDK/service/DeliveryReceiptResponse.h"
#include "QXExtensionSDK/service/ServiceProtocol.h"

namespace QXExtensionSDK {

// What the engagement module's request says of its sender.
struct QXEDeliveryReceiptRequestHeader {
  static constexpr std::string_view kPath = "/devicestatistics/v1/analytic";

  std::string subscriberToken;
  std::string accessToken;
  std::string baseUrl;
  std::string path{kPath};
  std::string qxsdkVersion;

  ServiceProtocol::Headers toDictionary() const;
};

// The engagement module's request.
using QXEDeliveryReceiptRequest = ReceiptRequest<QXEDeliveryReceiptRequestHeader>;

// The engagement module's answer.
class QXEDeliveryReceiptResponse final : public DeliveryReceiptResponse {};

}  // namespace QXExtensionSDK
