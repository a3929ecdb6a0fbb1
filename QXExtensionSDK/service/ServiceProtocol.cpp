#include "QXExtensionSDK/service/ServiceProtocol.h"

#include "QXExtensionSDK/service/DefaultRequestBuilder.h"

namespace QXExtensionSDK {

std::string ServiceProtocol::description() const {
  const auto request = DefaultRequestBuilder().build(*this);
  return request ? request->description() : request.error().description();
}

}  // namespace QXExtensionSDK
