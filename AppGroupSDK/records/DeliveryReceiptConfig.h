#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "platform/foundation/JSONCoding.h"
#include "platform/foundation/RawValues.h"

namespace AppGroupSDK {

enum class FeatureFlagStatus : std::int64_t { disabled = 0, enabled = 1 };
constexpr auto rawValues(platform::RawValuesOf<FeatureFlagStatus>) {
  return std::to_array({FeatureFlagStatus::disabled, FeatureFlagStatus::enabled});
}

// Whether delivery receipts are stored and sent.
class DeliveryReceiptConfig {
 public:
  explicit DeliveryReceiptConfig(FeatureFlagStatus featureFlag) : featureFlag_(featureFlag) {}

  FeatureFlagStatus featureFlag() const { return featureFlag_; }

  friend bool operator==(const DeliveryReceiptConfig&, const DeliveryReceiptConfig&) = default;

 private:
  friend platform::JSONRecordAccess;
  DeliveryReceiptConfig() = default;
  static constexpr auto jsonFields() {
    return platform::jsonFields(platform::jsonField("featureFlag", &DeliveryReceiptConfig::featureFlag_));
  }

  FeatureFlagStatus featureFlag_ = FeatureFlagStatus::disabled;
};

}  // namespace AppGroupSDK
