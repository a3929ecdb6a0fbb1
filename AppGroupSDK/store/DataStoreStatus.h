#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "QXPlatform/foundation/RawValues.h"

namespace AppGroupSDK {

// The outcome of every operation on a store.
enum class DataStoreStatus : std::int64_t {
  success = 0,
  containerUnavailable = 1,    // no container could be found
  containerNotFileURL = 2,     // its location is not a file location
  encodingFailed = 3,          // the record could not be written as JSON (save)
  writeFailed = 4,             // the coordinated write failed (save)
  noData = 5,                  // no file, or it could not be read (fetch)
  decodingFailed = 6,          // the file holds something else (fetch)
  moduleStoreUnavailable = 7,  // a module-scoped call on a store made without a module
};
constexpr auto rawValues(QXPlatform::RawValuesOf<DataStoreStatus>) {
  using enum DataStoreStatus;
  return std::to_array<QXPlatform::RawCase<DataStoreStatus>>({
      {success, "success"},
      {containerUnavailable, "containerUnavailable"},
      {containerNotFileURL, "containerNotFileURL"},
      {encodingFailed, "encodingFailed"},
      {writeFailed, "writeFailed"},
      {noData, "noData"},
      {decodingFailed, "decodingFailed"},
      {moduleStoreUnavailable, "moduleStoreUnavailable"},
  });
}

// The case's name, such as "writeFailed".
constexpr std::string_view description(DataStoreStatus status) {
  return QXPlatform::rawValue(status);
}

}  // namespace AppGroupSDK
