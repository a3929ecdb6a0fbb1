#pragma once

#include <optional>

#include "platform/foundation/URL.h"

namespace AppGroupSDK {

// Says where the records are kept. Any thread.
class DataStoreDirectoryProviding {
 public:
  virtual ~DataStoreDirectoryProviding() = default;
  virtual std::optional<platform::URL> containerURL() const = 0;
};

}  // namespace AppGroupSDK
