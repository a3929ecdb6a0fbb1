#pragma once

#include <optional>
#include <string>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "AppGroupSDK/records/DeliveryReceiptConfig.h"

namespace QXExtensionSDK {

// Gives the receipt settings of one module. Any thread.
class DeliveryReceiptConfigProviding {
 public:
  virtual ~DeliveryReceiptConfigProviding() = default;
  virtual std::optional<AppGroupSDK::DeliveryReceiptConfig> deliveryReceiptConfig() const = 0;
  // The module's name, for log lines.
  virtual std::string description() const = 0;
};

// The settings that the host application has stored, read at each call.
class DeliveryReceiptConfigStore final : public DeliveryReceiptConfigProviding {
 public:
  // `appId`: the module's application id, if it has one.
  DeliveryReceiptConfigStore(AppGroupSDK::ExtensionModuleName module, std::optional<std::string> appId);

  std::optional<AppGroupSDK::DeliveryReceiptConfig> deliveryReceiptConfig() const override;
  std::string description() const override;

 private:
  const AppGroupSDK::ExtensionModuleName module_;
  const std::optional<std::string> appId_;
};

}  // namespace QXExtensionSDK
