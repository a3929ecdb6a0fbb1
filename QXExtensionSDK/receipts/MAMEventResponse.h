#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "QXExtensionSDK/service/DeliveryReceiptResponse.h"

namespace QXExtensionSDK {

// What the back end says of one node that it was sent.
struct ResponseStatus {
  std::optional<std::int64_t> status;
  std::optional<platform::Value> body;

  static constexpr auto jsonFields() {
    return platform::jsonFields(platform::jsonField("status", &ResponseStatus::status),
                                platform::jsonField("body", &ResponseStatus::body));
  }
};

struct ResponseNode {
  std::optional<std::vector<ResponseNode>> nodes;
  std::optional<std::int64_t> version;
  std::optional<std::string> name;
  std::optional<ResponseStatus> response;

  static constexpr auto jsonFields() {
    return platform::jsonFields(platform::jsonField("nodes", &ResponseNode::nodes),
                                platform::jsonField("version", &ResponseNode::version),
                                platform::jsonField("name", &ResponseNode::name),
                                platform::jsonField("response", &ResponseNode::response));
  }
};

// The mobile-app-messaging module's answer. Immutable once decoded.
class MAMEventResponse final : public DeliveryReceiptResponse {
 public:
  const std::optional<std::vector<ResponseNode>>& nodes() const { return nodes_; }

  // With the status of every node.
  std::string description() const override;

 private:
  friend platform::JSONRecordAccess;
  static constexpr auto jsonFields() {
    return std::tuple_cat(DeliveryReceiptResponse::jsonFields(),
                          platform::jsonFields(platform::jsonField("nodes", &MAMEventResponse::nodes_)));
  }

  std::optional<std::vector<ResponseNode>> nodes_;
};

}  // namespace QXExtensionSDK
