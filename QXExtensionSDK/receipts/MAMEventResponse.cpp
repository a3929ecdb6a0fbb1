#include "QXExtensionSDK/receipts/MAMEventResponse.h"

namespace QXExtensionSDK {

std::vector<ResponseNode> MAMEventResponse::nodes() const {
  if (!nodes_) return {};
  auto nodes = platform::decodeValue<std::vector<ResponseNode>>(*nodes_);
  return nodes ? *std::move(nodes) : std::vector<ResponseNode>();
}

std::string MAMEventResponse::description() const {
  std::string text = DeliveryReceiptResponse::description();
  for (const ResponseNode& node : nodes()) {
    text += ", node: ";
    text += node.response && node.response->status ? std::to_string(*node.response->status) : "nil";
  }
  return text;
}

}  // namespace QXExtensionSDK
