#pragma once

#include <optional>
#include <string>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

// The host application's side of the shared container. Each command prints its results and returns the exit
// code. Where a module is optional, naming one means its module-scoped record.

struct HostDeviceOptions {
  std::string baseUrl;
  std::string applicationId;
  std::string deviceId;
  std::string accessToken;
  std::string sdkVersion;
  std::optional<std::string> subscriberToken;
  std::optional<std::string> tenantId;
  std::optional<std::string> sessionId;
  std::optional<AppGroupSDK::ExtensionModuleName> module;
};

struct HostReceiptsOptions {
  bool on = false;
  std::optional<AppGroupSDK::ExtensionModuleName> module;
};

struct HostMapAppOptions {
  AppGroupSDK::ExtensionModuleName module{};
  std::string appId;
};

// Makes the container if it is not there.
int runHostInit(const SimulatorOptions& simulator);
int runHostSetDevice(const SimulatorOptions& simulator, const HostDeviceOptions& options);
int runHostReceipts(const SimulatorOptions& simulator, const HostReceiptsOptions& options);
int runHostMapApp(const SimulatorOptions& simulator, const HostMapAppOptions& options);
// One line a record: the base records, and every module-scoped one that is there. Tokens are shortened.
int runHostShow(const SimulatorOptions& simulator);
// The module's receipts, one a line, as stored.
int runHostPending(const SimulatorOptions& simulator, AppGroupSDK::ExtensionModuleName module);
// The module's last carousel click, as stored.
int runHostLastClick(const SimulatorOptions& simulator, AppGroupSDK::ExtensionModuleName module);

}  // namespace qx
