#pragma once

#include "QXExtensionSDK/service/RequestBuilder.h"

namespace QXExtensionSDK {

// The body as compact JSON, the headers as they are, a time-out of 60 seconds.
class DefaultRequestBuilder final : public RequestBuilder {
 public:
  // `encodingError` for a body that JSON cannot hold.
  QXPlatform::Result<QXPlatform::URLRequest, ServiceError> build(
      const ServiceProtocol& service) const override;
};

}  // namespace QXExtensionSDK
