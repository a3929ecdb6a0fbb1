#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "AppGroupSDK/AppGroupSDK.h"
#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"
#include "tools/qx/HostCommands.h"
#include "tools/qx/HostContainer.h"
#include "tools/qx/HostRecords.h"
#include "tools/qx/HostSecrets.h"
#include "tools/qx/Stable.h"

namespace qx {

namespace {

using namespace AppGroupSDK;
using QXPlatform::Dictionary;

struct Scope {
  ExtensionModuleName module;
  std::string appId;
};

Dictionary shownValue(const SimulatorOptions& simulator, const Dictionary& record) {
  const QXPlatform::Value* receipts = record.find("pnData");
  if (!simulator.stable || receipts == nullptr) return hidingSecrets(record);
  std::vector<QXPlatform::Value> stable;
  for (const auto& each : receipts->elements()) {
    stable.push_back(stableReceipt(*each.dictionary(), stable.size() + 1));
  }
  return record.setting("pnData", stable);
}

template <typename Model>
void showRecord(const SimulatorOptions& simulator, std::string_view name, const DataStore& store,
                const std::optional<Scope>& scope) {
  const auto fetched = store.fetch<Model>();
  Dictionary line{{"record", name}, {"status", description(fetched.status())}};
  if (scope) line = line.merging({{"module", stringValue(scope->module)}, {"appId", scope->appId}});
  const auto path = recordPath<Model>(store).value_or(std::string(Model::dataStoreFileName()));
  line = line.setting("file", shownPath(simulator, path));
  if (fetched.value()) line = line.setting("value", shownValue(simulator, encodeRecord(*fetched.value())));
  printResult(simulator, line);
}

// Nothing is in a container that is not there.
QXPlatform::Result<std::vector<std::string>> filesInContainer() {
  std::vector<std::string> names;
  const auto container = AppGroupDirectoryProvider().containerURL();
  if (!container) return names;
  std::error_code error;
  std::filesystem::directory_iterator entry(container->filePath(), error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    names.push_back(entry->path().filename());
  }
  if (error) return QXPlatform::Error{container->filePath() + " cannot be listed: " + error.message()};
  std::ranges::sort(names);
  return names;
}

// The application id in the name of a module-scoped file; nothing for any other file.
std::optional<std::string> appIdIn(std::string_view file, std::string_view baseName,
                                   ExtensionModuleName module) {
  constexpr std::string_view kExtension = ".data";
  baseName.remove_suffix(kExtension.size());
  const std::string prefix = std::string(baseName) + "." + std::string(stringValue(module)) + ".";
  if (file.size() < prefix.size() + kExtension.size() || !file.starts_with(prefix) ||
      !file.ends_with(kExtension)) {
    return std::nullopt;
  }
  file.remove_prefix(prefix.size());
  file.remove_suffix(kExtension.size());
  return std::string(file);
}

template <typename Model>
void showModuleScoped(const SimulatorOptions& simulator, std::string_view name,
                      const std::vector<std::string>& files) {
  for (const auto& file : files) {
    for (const auto module : rawValues(QXPlatform::RawValuesOf<ExtensionModuleName>())) {
      const auto appId = appIdIn(file, Model::dataStoreFileName(), module);
      if (!appId) continue;
      showRecord<Model>(simulator, name, AppGroupModuleDataStore(stringValue(module), *appId),
                        Scope{module, *appId});
    }
  }
}

// What was no record when one was stored in its place.
void showDamaged(const SimulatorOptions& simulator, const std::vector<std::string>& files) {
  const auto container = AppGroupDirectoryProvider().containerURL();
  for (const auto& file : files) {
    if (!file.ends_with(DataStore::kSetAsideSuffix)) continue;
    printResult(
        simulator,
        Dictionary{{"status", "damaged"},
                   {"file", shownPath(simulator, container->appendingPathComponent(file).filePath())}});
  }
}

}  // namespace

int runHostShow(const SimulatorOptions& simulator) {
  warnOfNoContainersRoot("host show");
  const AppGroupDataStore base;
  showRecord<AppDeviceInfo>(simulator, "AppDeviceInfo", base, std::nullopt);
  showRecord<FeatureConfigDetail>(simulator, "FeatureConfigDetail", base, std::nullopt);
  showRecord<ModuleAppMappings>(simulator, "ModuleAppMappings", base, std::nullopt);
  const auto files = filesInContainer();
  if (!files) return fail("host show", files.error().message);
  showModuleScoped<AppDeviceInfo>(simulator, "AppDeviceInfo", *files);
  showModuleScoped<FeatureConfigDetail>(simulator, "FeatureConfigDetail", *files);
  showModuleScoped<DeliveryReceiptsModel>(simulator, "DeliveryReceiptsModel", *files);
  showModuleScoped<CarouselClickModel>(simulator, "CarouselClickModel", *files);
  showDamaged(simulator, *files);
  return 0;
}

}  // namespace qx
