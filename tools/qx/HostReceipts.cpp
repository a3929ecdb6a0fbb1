#include "AppGroupSDK/records/FeatureConfigDetail.h"
#include "tools/qx/HostCommands.h"
#include "tools/qx/HostRecords.h"

namespace qx {

int runHostReceipts(const SimulatorOptions& simulator, const HostReceiptsOptions& options) {
  using AppGroupSDK::FeatureFlagStatus;
  const AppGroupSDK::FeatureConfigDetail features{AppGroupSDK::DeliveryReceiptConfig(
      options.on ? FeatureFlagStatus::enabled : FeatureFlagStatus::disabled)};
  return saveRecord(simulator, "host receipts", options.module, features);
}

}  // namespace qx
