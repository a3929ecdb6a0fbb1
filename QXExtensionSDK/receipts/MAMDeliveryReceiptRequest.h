#pragma once

#include <string>
#include <string_view>

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

// The mobile-app-messaging module's request. Immutable.
class MAMDeliveryReceiptRequest final : public ServiceProtocol {
 public:
  MAMDeliveryReceiptRequest(platform::URL baseURL, MAMDeliveryReceiptRequestHeader header,
                            platform::Dictionary body);

  platform::URL url() const override { return baseURL_.appendingPathComponent(header_.path); }
  HTTPMethod method() const override { return HTTPMethod::post; }
  Headers headers() const override { return header_.toDictionary(); }
  std::optional<platform::Dictionary> body() const override { return body_; }

 private:
  const platform::URL baseURL_;
  const MAMDeliveryReceiptRequestHeader header_;
  const platform::Dictionary body_;
};

}  // namespace QXExtensionSDK
