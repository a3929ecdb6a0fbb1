#pragma once

#include <string_view>

#include "AppGroupSDK/records/DeliveryReceiptConfig.h"
#include "QXPlatform/foundation/JSONCoding.h"

namespace AppGroupSDK {

// Which features are on. Written by the host application.
class FeatureConfigDetail {
 public:
  static constexpr std::string_view dataStoreFileName() {
    return "com.veltro.qx.extensionsdk.featureConfigDetail.data";
  }

  explicit FeatureConfigDetail(DeliveryReceiptConfig deliveryReceiptConfig)
      : deliveryReceiptConfig_(deliveryReceiptConfig) {}

  const DeliveryReceiptConfig& deliveryReceiptConfig() const { return deliveryReceiptConfig_; }

  friend bool operator==(const FeatureConfigDetail&, const FeatureConfigDetail&) = default;

 private:
  friend QXPlatform::JSONRecordAccess;
  FeatureConfigDetail() = default;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(
        QXPlatform::jsonField("deliveryReceiptConfig", &FeatureConfigDetail::deliveryReceiptConfig_));
  }

  DeliveryReceiptConfig deliveryReceiptConfig_{FeatureFlagStatus::disabled};
};

}  // namespace AppGroupSDK
