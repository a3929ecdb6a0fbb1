#pragma once

#include <memory>
#include <string>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "QXExtensionSDK/receipts/ReceiptManager.h"

namespace QXExtensionSDK {

// Assembles the receipt manager of one module.
class DeliveryReceiptManagerProviding {
 public:
  virtual ~DeliveryReceiptManagerProviding() = default;
  virtual std::shared_ptr<DeliveryReceiptManaging> makeManager() const = 0;
};

// Over the shared container and the network. Every call makes everything afresh; any thread.
class DeliveryReceiptManagerProvider final : public DeliveryReceiptManagerProviding {
 public:
  // `appId`: the module's application id.
  DeliveryReceiptManagerProvider(AppGroupSDK::ExtensionModuleName module, std::string appId);

  std::shared_ptr<DeliveryReceiptManaging> makeManager() const override;

 private:
  const AppGroupSDK::ExtensionModuleName module_;
  const std::string appId_;
};

}  // namespace QXExtensionSDK
