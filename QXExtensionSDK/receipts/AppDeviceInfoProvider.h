#pragma once

#include <optional>
#include <string>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "AppGroupSDK/records/AppDeviceInfo.h"

namespace QXExtensionSDK {

// Where receipts of one module go and in whose name. Used from one thread at a time.
class AppDeviceInfoProviding {
 public:
  virtual ~AppDeviceInfoProviding() = default;
  // Nothing when nothing is stored.
  virtual const std::optional<AppGroupSDK::AppDeviceInfo>& appDeviceInfo() = 0;
};

// What the host application has stored, read on first use and kept.
class AppDeviceInfoProvider final : public AppDeviceInfoProviding {
 public:
  AppDeviceInfoProvider(AppGroupSDK::ExtensionModuleName module, std::string appId);

  const std::optional<AppGroupSDK::AppDeviceInfo>& appDeviceInfo() override;

 private:
  const AppGroupSDK::ExtensionModuleName module_;
  const std::string appId_;
  bool loaded_ = false;
  std::optional<AppGroupSDK::AppDeviceInfo> appDeviceInfo_;
};

}  // namespace QXExtensionSDK
