#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

// The back end's answer to a request with delivery receipts. Immutable once decoded.
class DeliveryReceiptResponse {
 public:
  DeliveryReceiptResponse() = default;
  DeliveryReceiptResponse(const DeliveryReceiptResponse&) = default;
  DeliveryReceiptResponse& operator=(const DeliveryReceiptResponse&) = default;
  virtual ~DeliveryReceiptResponse() = default;

  const std::optional<std::int64_t>& code() const { return code_; }
  const std::optional<std::string>& message() const { return message_; }
  const std::optional<std::string>& requestId() const { return requestId_; }
  const std::optional<QXPlatform::Value>& body() const { return body_; }

  // The code, the sizes of message and request id, and whether there is a body: a back end may echo what it
  // was sent, and no token belongs in the log.
  virtual std::string description() const;

 protected:
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("code", &DeliveryReceiptResponse::code_),
                                  QXPlatform::jsonField("message", &DeliveryReceiptResponse::message_),
                                  QXPlatform::jsonField("requestId", &DeliveryReceiptResponse::requestId_),
                                  QXPlatform::jsonField("body", &DeliveryReceiptResponse::body_));
  }

 private:
  friend QXPlatform::JSONRecordAccess;

  std::optional<std::int64_t> code_;
  std::optional<std::string> message_;
  std::optional<std::string> requestId_;
  std::optional<QXPlatform::Value> body_;
};

}  // namespace QXExtensionSDK
