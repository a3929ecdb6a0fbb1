#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "platform/foundation/Data.h"
#include "platform/foundation/Result.h"
#include "platform/network/URLSession.h"

namespace QXExtensionSDK {

// What goes wrong in the HTTP layer itself. The descriptions are log lines; none holds a byte of a body.
class ServiceError {
 public:
  struct EncodingError {
    platform::Error underlying;
  };
  struct DecodingError {
    platform::Error underlying;
  };
  struct Failed {
    int statusCode;
    std::optional<platform::Data> data;
  };
  struct MissingBaseURL {};
  struct NoData {};
  struct Unknown {};
  using Case = std::variant<EncodingError, DecodingError, Failed, MissingBaseURL, NoData, Unknown>;

  ServiceError(Case value) : value_(std::move(value)) {}

  const Case& value() const { return value_; }
  std::string description() const;

 private:
  Case value_;
};

// Why a send failed: an error of the HTTP layer, or the platform's own, unchanged.
using SendError = std::variant<ServiceError, platform::URLError>;

std::string description(const SendError& error);

// What an error of the HTTP layer carries along: the cause of a coding error, status and body size of a
// refusal. Nothing for any other.
std::optional<std::string> details(const SendError& error);

}  // namespace QXExtensionSDK
