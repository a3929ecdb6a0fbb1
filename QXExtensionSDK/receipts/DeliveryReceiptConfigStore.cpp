#include "QXExtensionSDK/receipts/DeliveryReceiptConfigStore.h"

#include <utility>

#include "AppGroupSDK/records/FeatureConfigDetail.h"
#include "QXExtensionSDK/receipts/ModuleRecord.h"

namespace QXExtensionSDK {

DeliveryReceiptConfigStore::DeliveryReceiptConfigStore(AppGroupSDK::ExtensionModuleName module,
                                                       std::optional<std::string> appId)
    : module_(module), appId_(std::move(appId)) {}

std::optional<AppGroupSDK::DeliveryReceiptConfig> DeliveryReceiptConfigStore::deliveryReceiptConfig() const {
  const auto record = fetchModuleRecord<AppGroupSDK::FeatureConfigDetail>(module_, appId_);
  return record ? std::optional(record->deliveryReceiptConfig()) : std::nullopt;
}

std::string DeliveryReceiptConfigStore::description() const {
  return std::string(stringValue(module_));
}

}  // namespace QXExtensionSDK
