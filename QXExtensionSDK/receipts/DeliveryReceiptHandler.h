#pragma once

#include <memory>

#include "QXExtensionSDK/receipts/DeliveryReceiptRepository.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptService.h"

namespace QXExtensionSDK {

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
