#include "QXExtensionSDK/service/DeliveryReceiptResponse.h"

namespace QXExtensionSDK {

std::string DeliveryReceiptResponse::description() const {
  std::string text = "code: ";
  text += code_ ? std::to_string(*code_) : "nil";
  text += ", message: " + message_.value_or("nil");
  text += ", requestId: " + requestId_.value_or("nil");
  text += body_ ? ", with a body" : ", without a body";
  return text;
}

}  // namespace QXExtensionSDK
