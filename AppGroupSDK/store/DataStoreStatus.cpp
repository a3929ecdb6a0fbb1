#include "AppGroupSDK/store/DataStoreStatus.h"

#include <array>
#include <cstddef>

namespace AppGroupSDK {

namespace {

constexpr std::array<std::string_view, 8> kNames{
    "success", "containerUnavailable", "containerNotFileURL",   "encodingFailed", "writeFailed",
    "noData",  "decodingFailed",       "moduleStoreUnavailable"};

}  // namespace

std::optional<DataStoreStatus> makeDataStoreStatus(std::int64_t rawValue) {
  if (rawValue < 0 || rawValue >= static_cast<std::int64_t>(kNames.size())) return std::nullopt;
  return static_cast<DataStoreStatus>(rawValue);
}

std::string_view description(DataStoreStatus status) {
  return kNames.at(static_cast<std::size_t>(status));
}

}  // namespace AppGroupSDK
