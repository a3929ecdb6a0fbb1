#pragma once

#include "AppGroupSDK/store/DataStore.h"

namespace AppGroupSDK {

// The records of one module and application id. Their files bear both in their names, trimmed of blanks:
// com.veltro.qx.extensionsdk.carousel.quorixEngagement.abc-1.data for example.
class AppGroupModuleDataStore final : public DataStore {
 public:
  // Over the application group's container, with file coordination.
  AppGroupModuleDataStore(std::string_view moduleName, std::string_view appId);
  AppGroupModuleDataStore(std::string_view moduleName, std::string_view appId,
                          std::unique_ptr<const DataStoreDirectoryProviding> directoryProvider,
                          std::unique_ptr<const DataStoreSaving> dataSaver);

 private:
  std::string fileName(std::string_view baseName) const override;

  std::string moduleName_;
  std::string appId_;
};

}  // namespace AppGroupSDK
