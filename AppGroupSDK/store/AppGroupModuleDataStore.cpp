#include "AppGroupSDK/store/AppGroupModuleDataStore.h"

#include <utility>

#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"
#include "AppGroupSDK/store/DataStoreFileCoordinatorSaver.h"
#include "AppGroupSDK/store/Trimming.h"

namespace AppGroupSDK {

AppGroupModuleDataStore::AppGroupModuleDataStore(std::string_view moduleName, std::string_view appId)
    : AppGroupModuleDataStore(moduleName, appId, std::make_unique<AppGroupDirectoryProvider>(),
                              std::make_unique<DataStoreFileCoordinatorSaver>()) {}

AppGroupModuleDataStore::AppGroupModuleDataStore(
    std::string_view moduleName, std::string_view appId,
    std::unique_ptr<const DataStoreDirectoryProviding> directoryProvider,
    std::unique_ptr<const DataStoreSaving> dataSaver)
    : DataStore(std::move(directoryProvider), std::move(dataSaver)),
      moduleName_(trimmingWhitespaceAndNewlines(moduleName)),
      appId_(trimmingWhitespaceAndNewlines(appId)) {}

std::string AppGroupModuleDataStore::fileName(std::string_view baseName) const {
  constexpr std::string_view kExtension = ".data";
  std::string name(baseName);
  for (auto at = name.find(kExtension); at != std::string::npos; at = name.find(kExtension, at)) {
    name.erase(at, kExtension.size());
  }
  return name.append(".").append(moduleName_).append(".").append(appId_).append(kExtension);
}

}  // namespace AppGroupSDK
