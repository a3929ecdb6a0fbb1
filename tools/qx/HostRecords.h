#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "AppGroupSDK/store/AppGroupDataStore.h"
#include "AppGroupSDK/store/AppGroupModuleDataStore.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/qx/Results.h"

namespace qx {

// What the host commands share.

using AppGroupSDK::DataStoreStatus;
using AppGroupSDK::ExtensionModuleName;

// Writes the outcome of a save, with the path when there is one; returns the exit code.
int reportSave(const SimulatorOptions& simulator, std::string_view command, DataStoreStatus status,
               const std::optional<std::string>& path);

// A file as a result names it.
std::string shownPath(const SimulatorOptions& simulator, const std::string& path);

// Why a status came about, and what to do about it.
std::string explain(DataStoreStatus status);

// The stored application id, or why there is none.
QXPlatform::Result<std::string> storedAppId(ExtensionModuleName module);

template <typename Model>
std::optional<std::string> recordPath(const AppGroupSDK::DataStore& store) {
  const auto url = store.template fileURL<Model>();
  return url ? std::optional(url->filePath()) : std::nullopt;
}

template <typename Model>
int saveAndReport(const SimulatorOptions& simulator, std::string_view command,
                  const AppGroupSDK::DataStore& store, const Model& model) {
  return reportSave(simulator, command, store.save(model), recordPath<Model>(store));
}

// Saves the base record, or that of the module's stored application id.
template <typename Model>
int saveRecord(const SimulatorOptions& simulator, std::string_view command,
               const std::optional<ExtensionModuleName>& module, const Model& model) {
  if (!module) return saveAndReport(simulator, command, AppGroupSDK::AppGroupDataStore(), model);
  const auto appId = storedAppId(*module);
  if (!appId) return fail(command, appId.error().message);
  return saveAndReport(simulator, command, AppGroupSDK::AppGroupModuleDataStore(stringValue(*module), *appId),
                       model);
}

// A record of the module's stored application id, or why there is none.
template <typename Model>
QXPlatform::Result<AppGroupSDK::DataStoreResult<Model>> fetchRecord(ExtensionModuleName module) {
  const auto appId = storedAppId(module);
  if (!appId) return appId.error();
  return AppGroupSDK::AppGroupModuleDataStore(stringValue(module), *appId).template fetch<Model>();
}

// A record that was read from a file, as it is stored.
template <typename Record>
QXPlatform::Dictionary encodeRecord(const Record& record) {
  return QXPlatform::parseJSON(*QXPlatform::encodeJSON(record))->dictionary().value();
}

}  // namespace qx
