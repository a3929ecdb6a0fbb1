#pragma once

#include <optional>
#include <utility>

#include "AppGroupSDK/store/DataStoreStatus.h"

namespace AppGroupSDK {

// What came of fetching a record: the record with `success`, none with any other status. Immutable.
template <typename Model>
class DataStoreResult {
 public:
  DataStoreResult() = delete;
  DataStoreResult(DataStoreStatus status, std::optional<Model> value)
      : status_(status), value_(std::move(value)) {}

  DataStoreStatus status() const { return status_; }
  const std::optional<Model>& value() const& { return value_; }
  std::optional<Model> value() && { return std::move(value_); }

 private:
  DataStoreStatus status_;
  std::optional<Model> value_;
};

}  // namespace AppGroupSDK
