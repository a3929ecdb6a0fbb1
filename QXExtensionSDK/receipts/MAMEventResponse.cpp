#include "QXExtensionSDK/receipts/MAMEventResponse.h"

#include <string_view>
#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

using QXPlatform::DecodingErrors;
using QXPlatform::Value;

namespace {

template <typename T>
std::optional<T> member(const Value& object, std::string_view key) {
  const Value& value = object[key];
  if (value.isNull()) return std::nullopt;
  auto decoded = QXPlatform::decodeValue<T>(value);
  if (decoded) return *std::move(decoded);
  Logger::service().debug(LogCategory::deliveryReceipt, "MAMEventResponse without ", key, ": ",
                          decoded.error());
  return std::nullopt;
}

}  // namespace

bool ResponseStatus::decodeJSON(const Value& value, ResponseStatus& out, DecodingErrors& errors) {
  if (!value.isDictionary()) return errors.add("expected an object");
  out = {member<std::int64_t>(value, "status"), member<Value>(value, "body")};
  return true;
}

bool ResponseNode::decodeJSON(const Value& value, ResponseNode& out, DecodingErrors& errors) {
  if (!value.isDictionary()) return errors.add("expected an object");
  out = {member<std::vector<ResponseNode>>(value, "nodes"), member<std::int64_t>(value, "version"),
         member<std::string>(value, "name"), member<ResponseStatus>(value, "response")};
  return true;
}

bool MAMEventResponse::decodeJSON(const Value& value, MAMEventResponse& out, DecodingErrors& errors) {
  if (!QXPlatform::JSONCoder<DeliveryReceiptResponse>::decode(value, out, errors)) return false;
  out.nodes_ = member<std::vector<ResponseNode>>(value, "nodes");
  return true;
}

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
