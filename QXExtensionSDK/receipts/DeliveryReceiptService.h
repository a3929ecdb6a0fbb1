#pragma once

#include "QXExtensionSDK/service/ServiceManager.h"

namespace QXExtensionSDK {

// Sends one request with receipts. Any thread.
class DeliveryReceiptSending {
 public:
  virtual ~DeliveryReceiptSending() = default;
  // As ServiceManager::send().
  virtual void send(const ServiceProtocol& request, ServiceManager::Completion completion) const = 0;
};

class DeliveryReceiptService final : public DeliveryReceiptSending {
 public:
  explicit DeliveryReceiptService(ServiceManager serviceManager)
      : serviceManager_(std::move(serviceManager)) {}

  void send(const ServiceProtocol& request, ServiceManager::Completion completion) const override {
    serviceManager_.send(request, std::move(completion));
  }

 private:
  const ServiceManager serviceManager_;
};

}  // namespace QXExtensionSDK
