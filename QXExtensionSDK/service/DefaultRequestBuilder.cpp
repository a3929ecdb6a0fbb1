#include "QXExtensionSDK/service/DefaultRequestBuilder.h"

#include <chrono>
#include <utility>

#include "platform/foundation/JSON.h"

namespace QXExtensionSDK {

namespace {

constexpr auto kTimeoutInterval = std::chrono::seconds(60);

}  // namespace

platform::Result<platform::URLRequest, ServiceError> DefaultRequestBuilder::build(
    const ServiceProtocol& service) const {
  platform::URLRequest request(service.url(), platform::CachePolicy::useProtocolCachePolicy,
                               kTimeoutInterval);
  request.httpMethod = rawValue(service.method());
  for (const auto& [field, value] : service.headers()) request.setValueForHTTPHeaderField(value, field);
  if (const auto body = service.body()) {
    auto text = platform::writeJSON(*body, platform::JSONStyle::compact);
    if (!text) return ServiceError(ServiceError::EncodingError{text.error()});
    request.httpBody = platform::Data(*std::move(text));
  }
  return request;
}

}  // namespace QXExtensionSDK
