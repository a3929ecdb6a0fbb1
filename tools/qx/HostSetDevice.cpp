#include "AppGroupSDK/records/AppDeviceInfo.h"
#include "tools/qx/HostCommands.h"
#include "tools/qx/HostRecords.h"

namespace qx {

int runHostSetDevice(const SimulatorOptions& simulator, const HostDeviceOptions& options) {
  const AppGroupSDK::AppDeviceInfo device(options.baseUrl, options.applicationId, options.deviceId,
                                          options.accessToken, options.sdkVersion, options.subscriberToken,
                                          options.tenantId, options.sessionId);
  return saveRecord(simulator, "host set-device", options.module, device);
}

}  // namespace qx
