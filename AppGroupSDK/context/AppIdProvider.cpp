#include "AppGroupSDK/context/AppIdProvider.h"

namespace AppGroupSDK {

std::optional<std::string> AppIdProvider::appIdForModule(ExtensionModuleName module) {
  if (!moduleAppMappings_ || moduleAppMappings_->mappings().empty()) {
    moduleAppMappings_ = store_.fetchModelData().value();
  }
  return moduleAppMappings_ ? moduleAppMappings_->fetchAppIdForModule(module) : std::nullopt;
}

DataStoreStatus AppIdProvider::storeAppId(std::string_view appId, ExtensionModuleName module) const {
  return store_.saveModuleAppMapping(ModuleAppMapping(module, std::string(appId)));
}

}  // namespace AppGroupSDK
