#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "AppGroupSDK/records/ModuleAppMappingStore.h"

namespace AppGroupSDK {

// Application ids by module. Remembers the stored mappings from the first look-up that finds any, so an id
// that is stored later shows only in a new provider. Used from one thread at a time.
class AppIdProvider {
 public:
  explicit AppIdProvider(ModuleAppMappingStore store = {}) : store_(std::move(store)) {}

  std::optional<std::string> appIdForModule(ExtensionModuleName module);
  DataStoreStatus storeAppId(std::string_view appId, ExtensionModuleName module) const;

 private:
  ModuleAppMappingStore store_;
  std::optional<ModuleAppMappings> moduleAppMappings_;
};

}  // namespace AppGroupSDK
