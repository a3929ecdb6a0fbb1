#pragma once

#include <optional>
#include <string>
#include <utility>

#include "AppGroupSDK/records/AppDeviceInfo.h"
#include "QXExtensionSDK/receipts/ModuleRecord.h"

namespace QXExtensionSDK {

// Where receipts of one module go and in whose name, as the host application has stored it. Used from one
// thread at a time.
class AppDeviceInfoProvider {
 public:
  AppDeviceInfoProvider(AppGroupSDK::ExtensionModuleName module, std::string appId)
      : module_(module), appId_(std::move(appId)) {}

  // Read on first use and kept; nothing when nothing is stored.
  const std::optional<AppGroupSDK::AppDeviceInfo>& appDeviceInfo() {
    if (!loaded_) appDeviceInfo_ = fetchModuleRecord<AppGroupSDK::AppDeviceInfo>(module_, appId_);
    loaded_ = true;
    return appDeviceInfo_;
  }

 private:
  const AppGroupSDK::ExtensionModuleName module_;
  const std::optional<std::string> appId_;
  bool loaded_ = false;
  std::optional<AppGroupSDK::AppDeviceInfo> appDeviceInfo_;
};

}  // namespace QXExtensionSDK
