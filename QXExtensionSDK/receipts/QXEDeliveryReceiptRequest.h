#pragma once

#include <string>
#include <string_view>

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

// The engagement module's request. Immutable.
class QXEDeliveryReceiptRequest final : public ServiceProtocol {
 public:
  QXEDeliveryReceiptRequest(platform::URL baseURL, QXEDeliveryReceiptRequestHeader header,
                            platform::Dictionary body);

  platform::URL url() const override { return baseURL_.appendingPathComponent(header_.path); }
  HTTPMethod method() const override { return HTTPMethod::post; }
  Headers headers() const override { return header_.toDictionary(); }
  std::optional<platform::Dictionary> body() const override { return body_; }

 private:
  const platform::URL baseURL_;
  const QXEDeliveryReceiptRequestHeader header_;
  const platform::Dictionary body_;
};

// The engagement module's answer.
class QXEDeliveryReceiptResponse final : public DeliveryReceiptResponse {};

}  // namespace QXExtensionSDK
