#include "QXExtensionSDK/service/DeliveryReceiptResponse.h"

namespace QXExtensionSDK {

namespace {

std::string sizeText(const std::optional<std::string>& text) {
  return text ? std::to_string(text->size()) + " bytes" : "nil";
}

}  // namespace

std::string DeliveryReceiptResponse::description() const {
  std::string text = "code: ";
  text += code_ ? std::to_string(*code_) : "nil";
  text += ", message: " + sizeText(message_);
  text += ", requestId: " + sizeText(requestId_);
  text += body_ ? ", with a body" : ", without a body";
  return text;
}

}  // namespace QXExtensionSDK
