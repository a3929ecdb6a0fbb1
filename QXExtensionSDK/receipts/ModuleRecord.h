#pragma once

#include <optional>
#include <string>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "AppGroupSDK/records/ModelStore.h"

namespace QXExtensionSDK {

// A record that concerns one module: its own when it has an application id, and the base record when there is
// none. A record that is there but cannot be read counts as none: it is not for the base record to speak in
// its place. Any thread.
template <AppGroupSDK::DataStoreModelable Model>
std::optional<Model> fetchModuleRecord(AppGroupSDK::ExtensionModuleName module,
                                       const std::optional<std::string>& appId) {
  if (!appId) return AppGroupSDK::ModelStore<Model>().fetchModelData().value();
  const AppGroupSDK::ModelStore<Model> store(module, *appId);
  auto result = store.fetchModuleScopedModelData();
  if (result.status() != AppGroupSDK::DataStoreStatus::noData) return std::move(result).value();
  return store.fetchModelData().value();
}

}  // namespace QXExtensionSDK
