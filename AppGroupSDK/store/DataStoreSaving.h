#pragma once

#include <optional>
#include <string_view>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/URL.h"

namespace AppGroupSDK {

// Puts whole files into place and reads them back. Blocks until it is done; any thread.
class DataStoreSaving {
 public:
  virtual ~DataStoreSaving() = default;
  virtual bool write(std::string_view bytes, const QXPlatform::URL& destination) const = 0;
  // Nothing when the file is missing or cannot be read.
  virtual std::optional<QXPlatform::Data> read(const QXPlatform::URL& source) const = 0;
};

}  // namespace AppGroupSDK
