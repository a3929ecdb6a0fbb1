#pragma once

#include <memory>

#include "AppGroupSDK/store/DataStoreSaving.h"
#include "platform/files/FileCoordinator.h"

namespace AppGroupSDK {

// Reads and replaces files under file coordination. A write whose coordination is called off before it
// reaches the file counts as written; one of more bytes than a read takes (platform::kMaxFileContents) fails.
class DataStoreFileCoordinatorSaver final : public DataStoreSaving {
 public:
  explicit DataStoreFileCoordinatorSaver(std::unique_ptr<const platform::FileCoordinator> fileCoordinator =
                                             std::make_unique<platform::FileCoordinator>());

  bool write(std::string_view bytes, const platform::URL& destination) const override;
  std::optional<platform::Data> read(const platform::URL& source) const override;

 private:
  std::unique_ptr<const platform::FileCoordinator> fileCoordinator_;
};

}  // namespace AppGroupSDK
