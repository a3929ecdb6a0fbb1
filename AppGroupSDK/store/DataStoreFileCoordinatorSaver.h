#pragma once

#include <memory>

#include "AppGroupSDK/store/DataStoreSaving.h"
#include "QXPlatform/files/FileCoordinator.h"

namespace AppGroupSDK {

// Reads and replaces files under file coordination. A write whose coordination is called off before it
// reaches the file counts as written; one of more bytes than a read takes (QXPlatform::kMaxFileContents)
// fails.
class DataStoreFileCoordinatorSaver final : public DataStoreSaving {
 public:
  explicit DataStoreFileCoordinatorSaver(std::unique_ptr<const QXPlatform::FileCoordinator> fileCoordinator =
                                             std::make_unique<QXPlatform::FileCoordinator>());

  bool write(std::string_view bytes, const QXPlatform::URL& destination) const override;
  std::optional<QXPlatform::Data> read(const QXPlatform::URL& source) const override;
  std::optional<QXPlatform::Data> read(const QXPlatform::URL& source,
                                       const QXPlatform::URL& otherwise) const override;
  bool update(const QXPlatform::URL& file, std::optional<QXPlatform::FileVersion>& version,
              const Change& change) const override;

 private:
  std::unique_ptr<const QXPlatform::FileCoordinator> fileCoordinator_;
};

}  // namespace AppGroupSDK
