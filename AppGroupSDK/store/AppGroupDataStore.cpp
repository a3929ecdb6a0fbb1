#include "AppGroupSDK/store/AppGroupDataStore.h"

#include <utility>

#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"
#include "AppGroupSDK/store/DataStoreFileCoordinatorSaver.h"

namespace AppGroupSDK {

AppGroupDataStore::AppGroupDataStore()
    : AppGroupDataStore(std::make_unique<AppGroupDirectoryProvider>(),
                        std::make_unique<DataStoreFileCoordinatorSaver>()) {}

AppGroupDataStore::AppGroupDataStore(std::unique_ptr<const DataStoreDirectoryProviding> directoryProvider,
                                     std::unique_ptr<const DataStoreSaving> dataSaver)
    : DataStore(std::move(directoryProvider), std::move(dataSaver)) {}

std::string AppGroupDataStore::fileName(std::string_view baseName) const {
  return std::string(baseName);
}

}  // namespace AppGroupSDK
