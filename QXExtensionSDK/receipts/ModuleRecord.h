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
  using Store = AppGroupSDK::ModelStore<Model>;
  return (appId ? Store(module, *appId) : Store()).fetchModuleScopedOrBaseModelData().value();
}

}  // namespace QXExtensionSDK
