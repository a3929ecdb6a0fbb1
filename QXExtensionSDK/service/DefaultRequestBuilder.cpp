#include "QXExtensionSDK/service/DefaultRequestBuilder.h"

#include <chrono>
#include <utility>

#include "QXPlatform/foundation/JSON.h"

namespace QXExtensionSDK {

namespace {

constexpr auto kTimeoutInterval = std::chrono::seconds(60);

}  // namespace

QXPlatform::Result<QXPlatform::URLRequest, ServiceError> DefaultRequestBuilder::build(
    const ServiceProtocol& service) const {
  QXPlatform::URLRequest request(service.url(), QXPlatform::CachePolicy::useProtocolCachePolicy,
                                 kTimeoutInterval);
  request.httpMethod = QXPlatform::rawValue(service.method());
  for (const auto& [field, value] : service.headers()) request.setValueForHTTPHeaderField(value, field);
  if (const auto body = service.body()) {
    auto text = QXPlatform::writeJSON(*body, QXPlatform::JSONStyle::compact);
    if (!text) return ServiceError(ServiceError::EncodingError{text.error()});
    request.httpBody = QXPlatform::Data(*std::move(text));
  }
  return request;
}

}  // namespace QXExtensionSDK
