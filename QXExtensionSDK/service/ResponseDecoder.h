#pragma once

#include <memory>

#include "QXExtensionSDK/service/DeliveryReceiptResponse.h"
#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/Result.h"

namespace QXExtensionSDK {

// Turns the body of an answer into a record. Any thread.
class ResponseDecoder {
 public:
  using Response = std::shared_ptr<const DeliveryReceiptResponse>;

  virtual ~ResponseDecoder() = default;
  virtual QXPlatform::Result<Response> decode(const QXPlatform::Data& data) const = 0;
};

}  // namespace QXExtensionSDK
