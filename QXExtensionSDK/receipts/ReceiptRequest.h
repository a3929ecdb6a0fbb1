#pragma once

#include <optional>
#include <utility>

#include "QXExtensionSDK/service/ServiceProtocol.h"

namespace QXExtensionSDK {

// A module's request: a POST under the base URL. `Header` is a record with the `path` and, by toDictionary(),
// the header fields. Immutable.
template <typename Header>
class ReceiptRequest final : public ServiceProtocol {
 public:
  ReceiptRequest(QXPlatform::URL baseURL, Header header, QXPlatform::Dictionary body)
      : baseURL_(std::move(baseURL)), header_(std::move(header)), body_(std::move(body)) {}

  QXPlatform::URL url() const override { return baseURL_.appendingPathComponent(header_.path); }
  HTTPMethod method() const override { return HTTPMethod::post; }
  Headers headers() const override { return header_.toDictionary(); }
  std::optional<QXPlatform::Dictionary> body() const override { return body_; }

 private:
  const QXPlatform::URL baseURL_;
  const Header header_;
  const QXPlatform::Dictionary body_;
};

}  // namespace QXExtensionSDK
