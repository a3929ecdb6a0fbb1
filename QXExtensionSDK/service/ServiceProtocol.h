#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/URL.h"
#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

enum class HTTPMethod { get, post, put, delete_ };

// "GET", "POST", "PUT" or "DELETE".
std::string_view rawValue(HTTPMethod method);

// Describes one request to the back end. One value record a kind of request; immutable.
class ServiceProtocol {
 public:
  using Headers = std::map<std::string, std::string>;

  virtual ~ServiceProtocol() = default;

  virtual QXPlatform::URL url() const = 0;
  virtual HTTPMethod method() const = 0;
  virtual Headers headers() const = 0;
  // A JSON object; nothing for a request without a body.
  virtual std::optional<QXPlatform::Dictionary> body() const = 0;

  // Method, URL, header names and body size: fit for a log line.
  std::string description() const;
};

}  // namespace QXExtensionSDK
