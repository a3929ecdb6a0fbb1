#pragma once

#include "AppGroupSDK/store/DataStore.h"

namespace AppGroupSDK {

// The records that concern every module, each in the file of its base name.
class AppGroupDataStore final : public DataStore {
 public:
  // Over the application group's container, with file coordination.
  AppGroupDataStore();
  AppGroupDataStore(std::unique_ptr<const DataStoreDirectoryProviding> directoryProvider,
                    std::unique_ptr<const DataStoreSaving> dataSaver);

 private:
  std::string fileName(std::string_view baseName) const override;
};

}  // namespace AppGroupSDK
