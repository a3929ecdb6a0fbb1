#pragma once

#include <optional>

#include "QXPlatform/foundation/URL.h"

namespace AppGroupSDK {

// Says where the records are kept. Any thread.
class DataStoreDirectoryProviding {
 public:
  virtual ~DataStoreDirectoryProviding() = default;
  virtual std::optional<QXPlatform::URL> containerURL() const = 0;
};

}  // namespace AppGroupSDK
