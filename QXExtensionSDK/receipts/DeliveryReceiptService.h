#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "QXExtensionSDK/service/ServiceManager.h"

namespace QXExtensionSDK {

// Told once whether a module's receipts have reached the back end; on any thread.
using ReceiptCompletion = std::function<void(bool succeeded)>;

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

// Sends one request and tells whether the back end took it. Any thread.
class DeliveryReceiptHandling {
 public:
  virtual ~DeliveryReceiptHandling() = default;
  // The completion comes on a background queue, also when this object is gone; not at all for an answer that
  // is no HTTP answer.
  virtual void send(const ServiceProtocol& request, ReceiptCompletion completion) const = 0;
};

class DeliveryReceiptHandler final : public DeliveryReceiptHandling {
 public:
  explicit DeliveryReceiptHandler(std::unique_ptr<const DeliveryReceiptSending> service)
      : service_(std::move(service)) {}

  void send(const ServiceProtocol& request, ReceiptCompletion completion) const override;

 private:
  const std::unique_ptr<const DeliveryReceiptSending> service_;
};

}  // namespace QXExtensionSDK
