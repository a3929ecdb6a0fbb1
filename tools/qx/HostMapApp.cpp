#include "AppGroupSDK/context/AppIdProvider.h"
#include "tools/qx/HostCommands.h"
#include "tools/qx/HostRecords.h"

namespace qx {

int runHostMapApp(const SimulatorOptions& simulator, const HostMapAppOptions& options) {
  const auto status = AppGroupSDK::AppIdProvider().storeAppId(options.appId, options.module);
  return reportSave(simulator, "host map-app", status,
                    recordPath<AppGroupSDK::ModuleAppMappings>(AppGroupSDK::AppGroupDataStore()));
}

}  // namespace qx
