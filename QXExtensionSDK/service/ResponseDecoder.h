#pragma once

#include <memory>

#include "QXExtensionSDK/service/DeliveryReceiptResponse.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/Result.h"

namespace QXExtensionSDK {

// Turns the body of an answer into a record. Any thread.
class ResponseDecoder {
 public:
  using Response = std::shared_ptr<const DeliveryReceiptResponse>;

  virtual ~ResponseDecoder() = default;
  virtual platform::Result<Response> decode(const platform::Data& data) const = 0;
};

}  // namespace QXExtensionSDK
