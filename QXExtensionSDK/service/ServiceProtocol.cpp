#include "QXExtensionSDK/service/ServiceProtocol.h"

#include "QXExtensionSDK/service/DefaultRequestBuilder.h"

namespace QXExtensionSDK {

std::string_view rawValue(HTTPMethod method) {
  switch (method) {
    case HTTPMethod::get:
      return "GET";
    case HTTPMethod::post:
      return "POST";
    case HTTPMethod::put:
      return "PUT";
    case HTTPMethod::delete_:
      return "DELETE";
  }
  return {};
}

std::string ServiceProtocol::description() const {
  const auto request = DefaultRequestBuilder().build(*this);
  return request ? request->description() : request.error().description();
}

}  // namespace QXExtensionSDK
