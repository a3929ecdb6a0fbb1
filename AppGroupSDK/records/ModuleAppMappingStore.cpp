#include "AppGroupSDK/records/ModuleAppMappingStore.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace AppGroupSDK {

DataStoreStatus ModuleAppMappingStore::saveModuleAppMapping(const ModuleAppMapping& mapping) const {
  const auto stored = fetchModelData();
  auto mappings = stored.value() ? stored.value()->mappings() : std::vector<ModuleAppMapping>();
  const auto old = std::ranges::find(mappings, mapping.moduleName(), &ModuleAppMapping::moduleName);
  if (old != mappings.end()) {
    *old = mapping;
  } else {
    mappings.push_back(mapping);
  }
  return saveModelData(ModuleAppMappings(std::move(mappings)));
}

}  // namespace AppGroupSDK
