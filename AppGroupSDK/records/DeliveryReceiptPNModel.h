#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/foundation/RawValues.h"

namespace AppGroupSDK {

// Where a receipt stands. An acknowledged one has no status: it is removed.
enum class PNStatus : std::int64_t {
  pending = 0,  // not yet acknowledged
  failed = 1,   // a send was answered with a failure
};
constexpr auto rawValues(QXPlatform::RawValuesOf<PNStatus>) {
  return std::to_array({PNStatus::pending, PNStatus::failed});
}

// The receipt of one push for one module.
class DeliveryReceiptPNModel {
 public:
  // `eventDateUtc`: seconds since 1970. `propertyBag`: JSON text.
  DeliveryReceiptPNModel(std::string uuid, std::string messageId, std::optional<std::string> requestId,
                         std::string messageType, double eventDateUtc, std::optional<std::string> propertyBag,
                         PNStatus status)
      : uuid_(std::move(uuid)),
        messageId_(std::move(messageId)),
        requestId_(std::move(requestId)),
        messageType_(std::move(messageType)),
        eventDateUtc_(eventDateUtc),
        propertyBag_(std::move(propertyBag)),
        status_(status) {}

  const std::string& uuid() const { return uuid_; }
  const std::string& messageId() const { return messageId_; }
  const std::optional<std::string>& requestId() const { return requestId_; }
  const std::string& messageType() const { return messageType_; }
  double eventDateUtc() const { return eventDateUtc_; }
  const std::optional<std::string>& propertyBag() const { return propertyBag_; }
  void setPropertyBag(std::optional<std::string> propertyBag) { propertyBag_ = std::move(propertyBag); }
  PNStatus status() const { return status_; }
  void setStatus(PNStatus status) { status_ = status; }

  // All fields, absent ones as null, as pretty-printed JSON; empty when the date is not finite.
  std::string description() const;

  // By date alone, earlier ones first: two receipts of one instant are neither less nor greater.
  friend std::partial_ordering operator<=>(const DeliveryReceiptPNModel& left,
                                           const DeliveryReceiptPNModel& right) {
    return left.eventDateUtc_ <=> right.eventDateUtc_;
  }
  friend bool operator==(const DeliveryReceiptPNModel&, const DeliveryReceiptPNModel&) = default;

 private:
  friend QXPlatform::JSONRecordAccess;
  DeliveryReceiptPNModel() = default;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(
        QXPlatform::jsonField("uuid", &DeliveryReceiptPNModel::uuid_),
        QXPlatform::jsonField("messageId", &DeliveryReceiptPNModel::messageId_),
        QXPlatform::jsonField("requestId", &DeliveryReceiptPNModel::requestId_),
        QXPlatform::jsonField("messageType", &DeliveryReceiptPNModel::messageType_),
        QXPlatform::jsonField("eventDateUtc", &DeliveryReceiptPNModel::eventDateUtc_),
        QXPlatform::jsonField("propertyBag", &DeliveryReceiptPNModel::propertyBag_),
        QXPlatform::jsonField("status", &DeliveryReceiptPNModel::status_));
  }

  std::string uuid_;
  std::string messageId_;
  std::optional<std::string> requestId_;
  std::string messageType_;
  double eventDateUtc_ = 0;
  std::optional<std::string> propertyBag_;
  PNStatus status_ = PNStatus::pending;
};

}  // namespace AppGroupSDK
