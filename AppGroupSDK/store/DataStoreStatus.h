#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

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

// Nothing for a number outside 0 to 7.
std::optional<DataStoreStatus> makeDataStoreStatus(std::int64_t rawValue);

// The case's name, such as "writeFailed".
std::string_view description(DataStoreStatus status);

}  // namespace AppGroupSDK
