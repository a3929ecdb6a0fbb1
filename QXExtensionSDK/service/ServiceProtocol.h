#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>

#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/foundation/URL.h"
#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

enum class HTTPMethod { get, post, put, delete_ };
constexpr auto rawValues(QXPlatform::RawValuesOf<HTTPMethod>) {
  return std::to_array<QXPlatform::RawCase<HTTPMethod>>({{HTTPMethod::get, "GET"},
                                                         {HTTPMethod::post, "POST"},
                                                         {HTTPMethod::put, "PUT"},
                                                         {HTTPMethod::delete_, "DELETE"}});
}

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
