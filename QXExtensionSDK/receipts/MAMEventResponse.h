#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QXExtensionSDK/service/DeliveryReceiptResponse.h"

namespace QXExtensionSDK {

// The types of these members are our own reading of the back end's answers: one of another shape counts as
// absent, with a debug line, and the answer is good all the same.

// What the back end says of one node that it was sent.
struct ResponseStatus {
  std::optional<std::int64_t> status;
  std::optional<QXPlatform::Value> body;

  static bool decodeJSON(const QXPlatform::Value& value, ResponseStatus& out,
                         QXPlatform::DecodingErrors& errors);
};

struct ResponseNode {
  std::optional<std::vector<ResponseNode>> nodes;
  std::optional<std::int64_t> version;
  std::optional<std::string> name;
  std::optional<ResponseStatus> response;

  static bool decodeJSON(const QXPlatform::Value& value, ResponseNode& out,
                         QXPlatform::DecodingErrors& errors);
};

// The mobile-app-messaging module's answer. Immutable once decoded.
class MAMEventResponse final : public DeliveryReceiptResponse {
 public:
  const std::optional<std::vector<ResponseNode>>& nodes() const { return nodes_; }

  // With the status of every node.
  std::string description() const override;

  static bool decodeJSON(const QXPlatform::Value& value, MAMEventResponse& out,
                         QXPlatform::DecodingErrors& errors);

 private:
  std::optional<std::vector<ResponseNode>> nodes_;
};

}  // namespace QXExtensionSDK
