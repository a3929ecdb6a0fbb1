#pragma once

#include "QXExtensionSDK/service/ServiceError.h"
#include "QXExtensionSDK/service/ServiceProtocol.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/network/URLRequest.h"

namespace QXExtensionSDK {

// Makes an HTTP request of a description. Any thread.
class RequestBuilder {
 public:
  virtual ~RequestBuilder() = default;
  virtual QXPlatform::Result<QXPlatform::URLRequest, ServiceError> build(
      const ServiceProtocol& service) const = 0;
};

}  // namespace QXExtensionSDK
