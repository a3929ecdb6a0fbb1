#include "QXExtensionSDK/receipts/AppDeviceInfoProvider.h"

#include <utility>

#include "QXExtensionSDK/receipts/ModuleRecord.h"

namespace QXExtensionSDK {

AppDeviceInfoProvider::AppDeviceInfoProvider(AppGroupSDK::ExtensionModuleName module, std::string appId)
    : module_(module), appId_(std::move(appId)) {}

const std::optional<AppGroupSDK::AppDeviceInfo>& AppDeviceInfoProvider::appDeviceInfo() {
  if (!loaded_) appDeviceInfo_ = fetchModuleRecord<AppGroupSDK::AppDeviceInfo>(module_, appId_);
  loaded_ = true;
  return appDeviceInfo_;
}

}  // namespace QXExtensionSDK
