#pragma once

#include "AppGroupSDK/records/ModuleAppMappings.h"
#include "AppGroupSDK/store/AppGroupDataStore.h"

namespace AppGroupSDK {

using ModuleAppMappingFetchResult = DataStoreResult<ModuleAppMappings>;

// Keeps the application ids of the modules in the shared container. Any thread; blocks until the file
// operation is done.
class ModuleAppMappingStore {
 public:
  ModuleAppMappingFetchResult fetchModelData() const { return dataStore_.fetch<ModuleAppMappings>(); }
  DataStoreStatus saveModelData(const ModuleAppMappings& model) const { return dataStore_.save(model); }

  // Takes the place of the stored mapping of its module, or comes last. Reads, merges and writes without
  // holding others off in between: of two at the same moment one may be lost.
  DataStoreStatus saveModuleAppMapping(const ModuleAppMapping& mapping) const;

 private:
  AppGroupDataStore dataStore_;
};

}  // namespace AppGroupSDK
