#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/network/URLSession.h"

namespace QXExtensionSDK {

// What goes wrong in the HTTP layer itself. The descriptions are log lines; none holds a byte of a body.
class ServiceError {
 public:
  struct EncodingError {
    QXPlatform::Error underlying;
  };
  struct DecodingError {
    QXPlatform::Error underlying;
  };
  struct Failed {
    int statusCode;
    std::optional<QXPlatform::Data> data;
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
using SendError = std::variant<ServiceError, QXPlatform::URLError>;

std::string description(const SendError& error);

// What an error of the HTTP layer carries along: the cause of a coding error, status and body size of a
// refusal. A piece of a log line, whose text is made only if the line is; refers to the error.
struct ErrorDetails {
  const SendError& error;

  // Whether it carries anything.
  bool exist() const;
  // REQUIRES: exist()
  std::string description() const;
};

}  // namespace QXExtensionSDK
