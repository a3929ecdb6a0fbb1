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
  std::optional<QXPlatform::Value> body;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("status", &ResponseStatus::status),
                                  QXPlatform::jsonField("body", &ResponseStatus::body));
  }
};

struct ResponseNode {
  std::optional<std::vector<ResponseNode>> nodes;
  std::optional<std::int64_t> version;
  std::optional<std::string> name;
  std::optional<ResponseStatus> response;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("nodes", &ResponseNode::nodes),
                                  QXPlatform::jsonField("version", &ResponseNode::version),
                                  QXPlatform::jsonField("name", &ResponseNode::name),
                                  QXPlatform::jsonField("response", &ResponseNode::response));
  }
};

// The mobile-app-messaging module's answer. Immutable once decoded.
class MAMEventResponse final : public DeliveryReceiptResponse {
 public:
  const std::optional<std::vector<ResponseNode>>& nodes() const { return nodes_; }

  // With the status of every node.
  std::string description() const override;

 private:
  friend QXPlatform::JSONRecordAccess;
  static constexpr auto jsonFields() {
    return std::tuple_cat(DeliveryReceiptResponse::jsonFields(),
                          QXPlatform::jsonFields(QXPlatform::jsonField("nodes", &MAMEventResponse::nodes_)));
  }

  std::optional<std::vector<ResponseNode>> nodes_;
};

}  // namespace QXExtensionSDK
