#pragma once

#include "QXExtensionSDK/service/ServiceError.h"
#include "QXExtensionSDK/service/ServiceProtocol.h"
#include "platform/foundation/Result.h"
#include "platform/network/URLRequest.h"

namespace QXExtensionSDK {

// Makes an HTTP request of a description. Any thread.
class RequestBuilder {
 public:
  virtual ~RequestBuilder() = default;
  virtual platform::Result<platform::URLRequest, ServiceError> build(
      const ServiceProtocol& service) const = 0;
};

}  // namespace QXExtensionSDK
