#pragma once

#include <string_view>

#include "QXExtensionSDK/receipts/DeliveryReceiptData.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptRepository.h"

namespace QXExtensionSDK {

// Keeps and sends the receipts of one messaging module during one push. Calls on one object must not overlap.
class DeliveryReceiptManaging {
 public:
  virtual ~DeliveryReceiptManaging() = default;

  // Blocks until the receipt is in its file; false when it is not.
  virtual bool storeReceipt(const DeliveryReceiptData& data) = 0;
  // Returns once the module's pending receipts are on their way. The completion is called when their outcome
  // is recorded, on a background queue, also when this object is gone; right away when there is nothing to
  // send (true) or no request could be made (false). An answer that is no HTTP answer never completes.
  virtual void sendReceipts(ReceiptCompletion completion) = 0;
  // The class's name, for log lines.
  virtual std::string_view description() const = 0;
};

}  // namespace QXExtensionSDK
