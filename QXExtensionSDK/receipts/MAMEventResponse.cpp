#include "QXExtensionSDK/receipts/MAMEventResponse.h"

namespace QXExtensionSDK {

std::string MAMEventResponse::description() const {
  std::string text = DeliveryReceiptResponse::description();
  if (!nodes_) return text;
  for (const ResponseNode& node : *nodes_) {
    text += ", node: ";
    text += node.response && node.response->status ? std::to_string(*node.response->status) : "nil";
  }
  return text;
}

}  // namespace QXExtensionSDK
