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
  using Text = std::optional<std::string>;

  Text operator()(const ServiceError::EncodingError& error) const { return error.underlying.description(); }
  Text operator()(const ServiceError::DecodingError& error) const { return error.underlying.description(); }
  Text operator()(const ServiceError::Failed& error) const {
    return "status " + std::to_string(error.statusCode) + ", body " + bodySize(error.data);
  }
  template <typename Other>
  Text operator()(const Other&) const {
    return std::nullopt;
  }
};

}  // namespace

std::string ServiceError::description() const {
  return std::visit(Describe(), value_);
}

std::string description(const SendError& error) {
  return std::visit([](const auto& either) { return std::string(either.description()); }, error);
}

std::optional<std::string> details(const SendError& error) {
  const auto* service = std::get_if<ServiceError>(&error);
  return service != nullptr ? std::visit(Detail(), service->value()) : std::nullopt;
}

}  // namespace QXExtensionSDK
