#include "tools/qx/HostCommands.h"

#include "AppGroupSDK/context/AppIdProvider.h"
#include "AppGroupSDK/records/AppDeviceInfo.h"
#include "AppGroupSDK/records/CarouselClickModel.h"
#include "AppGroupSDK/records/DeliveryReceiptsModel.h"
#include "AppGroupSDK/records/FeatureConfigDetail.h"
#include "tools/qx/HostContainer.h"
#include "tools/qx/HostRecords.h"
#include "tools/qx/Stable.h"

namespace qx {

using namespace AppGroupSDK;

int runHostInit(const SimulatorOptions& simulator) {
  const auto container = makeContainer();
  if (!container) return fail("host init", container.error().message);
  return reportSave(simulator, "host init", DataStoreStatus::success, container->string());
}

int runHostSetDevice(const SimulatorOptions& simulator, const HostDeviceOptions& options) {
  const AppDeviceInfo device(options.baseUrl, options.applicationId, options.deviceId, options.accessToken,
                             options.sdkVersion, options.subscriberToken, options.tenantId,
                             options.sessionId);
  return saveRecord(simulator, "host set-device", options.module, device);
}

int runHostReceipts(const SimulatorOptions& simulator, const HostReceiptsOptions& options) {
  const FeatureConfigDetail features{
      DeliveryReceiptConfig(options.on ? FeatureFlagStatus::enabled : FeatureFlagStatus::disabled)};
  return saveRecord(simulator, "host receipts", options.module, features);
}

int runHostMapApp(const SimulatorOptions& simulator, const HostMapAppOptions& options) {
  const auto status = AppIdProvider().storeAppId(options.appId, options.module);
  return reportSave(simulator, "host map-app", status, recordPath<ModuleAppMappings>(AppGroupDataStore()));
}

int runHostPending(const SimulatorOptions& simulator, ExtensionModuleName module) {
  const auto receipts = fetchRecord<DeliveryReceiptsModel>(module);
  if (!receipts) return fail("host pending", receipts.error().message);
  if (receipts->status() == DataStoreStatus::noData) return 0;
  if (!receipts->value()) return fail("host pending", explain(receipts->status()));
  std::size_t number = 0;
  for (const auto& receipt : receipts->value()->pnData()) {
    const auto stored = encodeRecord(receipt);
    printResult(simulator, simulator.stable ? stableReceipt(stored, ++number) : stored);
  }
  return 0;
}

int runHostLastClick(const SimulatorOptions& simulator, ExtensionModuleName module) {
  const auto click = fetchRecord<CarouselClickModel>(module);
  if (!click) return fail("host last-click", click.error().message);
  if (!click->value()) return fail("host last-click", explain(click->status()));
  printResult(simulator, encodeRecord(*click->value()));
  return 0;
}

}  // namespace qx
