#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/foundation/RawValues.h"

namespace AppGroupSDK {

enum class FeatureFlagStatus : std::int64_t { disabled = 0, enabled = 1 };
constexpr auto rawValues(QXPlatform::RawValuesOf<FeatureFlagStatus>) {
  return std::to_array({FeatureFlagStatus::disabled, FeatureFlagStatus::enabled});
}

// Whether delivery receipts are stored and sent.
class DeliveryReceiptConfig {
 public:
  explicit DeliveryReceiptConfig(FeatureFlagStatus featureFlag) : featureFlag_(featureFlag) {}

  FeatureFlagStatus featureFlag() const { return featureFlag_; }

  friend bool operator==(const DeliveryReceiptConfig&, const DeliveryReceiptConfig&) = default;

 private:
  friend QXPlatform::JSONRecordAccess;
  DeliveryReceiptConfig() = default;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("featureFlag", &DeliveryReceiptConfig::featureFlag_));
  }

  FeatureFlagStatus featureFlag_ = FeatureFlagStatus::disabled;
};

}  // namespace AppGroupSDK
