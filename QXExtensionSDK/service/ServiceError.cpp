#include "QXExtensionSDK/service/ServiceError.h"

namespace QXExtensionSDK {

namespace {

std::string bodySize(const std::optional<QXPlatform::Data>& data) {
  return data ? data->description() : "nil";
}

struct Describe {
  std::string operator()(const ServiceError::EncodingError& error) const {
    return "Error encoding data " + error.underlying.description() + ".";
  }
  std::string operator()(const ServiceError::DecodingError& error) const {
    return "Error decoding data " + error.underlying.description() + ".";
  }
  std::string operator()(const ServiceError::Failed& error) const {
    return "Failed with status code: " + std::to_string(error.statusCode) + " and data " +
           bodySize(error.data) + ".";
  }
  std::string operator()(const ServiceError::MissingBaseURL&) const { return "No Base URL found."; }
  std::string operator()(const ServiceError::NoData&) const { return "No data returned."; }
  std::string operator()(const ServiceError::Unknown&) const { return "Unknown error occurred."; }
};

struct Detail {
  std::string operator()(const ServiceError::EncodingError& error) const {
    return error.underlying.description();
  }
  std::string operator()(const ServiceError::DecodingError& error) const {
    return error.underlying.description();
  }
  std::string operator()(const ServiceError::Failed& error) const {
    return "status " + std::to_string(error.statusCode) + ", body " + bodySize(error.data);
  }
  template <typename Other>
  std::string operator()(const Other&) const {
    return {};
  }
};

}  // namespace

std::string ServiceError::description() const {
  return std::visit(Describe(), value_);
}

std::string description(const SendError& error) {
  return std::visit([](const auto& either) { return std::string(either.description()); }, error);
}

bool ErrorDetails::exist() const {
  const auto* service = std::get_if<ServiceError>(&error);
  if (service == nullptr) return false;
  const auto& value = service->value();
  return std::holds_alternative<ServiceError::EncodingError>(value) ||
         std::holds_alternative<ServiceError::DecodingError>(value) ||
         std::holds_alternative<ServiceError::Failed>(value);
}

std::string ErrorDetails::description() const {
  return std::visit(Detail(), std::get<ServiceError>(error).value());
}

}  // namespace QXExtensionSDK
