#include "tools/qx/HostRecords.h"

#include <array>
#include <utility>

#include "AppGroupSDK/records/ModuleAppMappingStore.h"
#include "QXPlatform/files/Container.h"
#include "QXPlatform/foundation/RawValues.h"
#include "tools/qx/HostContainer.h"
#include "tools/qx/Stable.h"

namespace qx {

int reportSave(const SimulatorOptions& simulator, std::string_view command, DataStoreStatus status,
               const std::optional<std::string>& path) {
  QXPlatform::Dictionary result{{"status", description(status)}};
  if (path) result = result.setting("file", shownPath(simulator, *path));
  printResult(simulator, result);
  if (status == DataStoreStatus::success) return 0;
  return fail(command, path ? *path + ": " + explain(status) : explain(status));
}

std::string shownPath(const SimulatorOptions& simulator, const std::string& path) {
  return simulator.stable ? stablePath(path) : path;
}

std::string explain(DataStoreStatus status) {
  using enum DataStoreStatus;
  if (status == containerUnavailable && !QXPlatform::containersRoot()) return noContainersRoot().message;
  constexpr auto kExplanations = std::to_array<QXPlatform::RawCase<DataStoreStatus>>({
      {success, "done"},
      {containerUnavailable,
       "the bundle names no app group, or its container is not there: see qx host init"},
      {containerNotFileURL, "the container is not a file location"},
      {encodingFailed, "the record cannot be written as JSON"},
      {writeFailed, "the file cannot be written"},
      {noData, "nothing is stored"},
      {decodingFailed, "the file holds something else than the record"},
      {moduleStoreUnavailable, "the store has no module"},
  });
  return std::string(QXPlatform::nameIn(kExplanations, status));
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
