#include "tools/qx/HostRecords.h"

#include <utility>

#include "AppGroupSDK/records/ModuleAppMappingStore.h"

namespace qx {

int reportSave(const SimulatorOptions& simulator, std::string_view command, DataStoreStatus status,
               const std::optional<std::string>& path) {
  QXPlatform::Dictionary result{{"status", description(status)}};
  if (path) result = result.setting("file", *path);
  printResult(simulator, result);
  if (status == DataStoreStatus::success) return 0;
  return fail(command, path ? *path + ": " + explain(status) : explain(status));
}

std::string explain(DataStoreStatus status) {
  switch (status) {
    case DataStoreStatus::success:
      return "done";
    case DataStoreStatus::containerUnavailable:
      return "the bundle names no app group, or its container is not there: see qx host init";
    case DataStoreStatus::containerNotFileURL:
      return "the container is not a file location";
    case DataStoreStatus::encodingFailed:
      return "the record cannot be written as JSON";
    case DataStoreStatus::writeFailed:
      return "the file cannot be written";
    case DataStoreStatus::noData:
      return "nothing is stored";
    case DataStoreStatus::decodingFailed:
      return "the file holds something else than the record";
    case DataStoreStatus::moduleStoreUnavailable:
      return "the store has no module";
  }
  return "unknown status";
}

QXPlatform::Result<std::string> storedAppId(ExtensionModuleName module) {
  const auto mappings = AppGroupSDK::ModuleAppMappingStore().fetchModelData();
  if (mappings.status() != DataStoreStatus::success && mappings.status() != DataStoreStatus::noData) {
    return QXPlatform::Error{"module mappings: " + explain(mappings.status())};
  }
  auto appId = mappings.value() ? mappings.value()->fetchAppIdForModule(module) : std::nullopt;
  if (appId) return *std::move(appId);
  return QXPlatform::Error{"no application id is stored for " + std::string(stringValue(module)) +
                           ": see qx host map-app"};
}

}  // namespace qx
