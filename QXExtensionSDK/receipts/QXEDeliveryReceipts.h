#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QXExtensionSDK/receipts/ReceiptManager.h"
#include "QXExtensionSDK/service/DeliveryReceiptResponse.h"

namespace QXExtensionSDK {

// The engagement module's receipts: its event and body, its request and answer, and who sends them.

// One receipt as the engagement module reports it; refers to texts of others.
struct DeliveryReceiptEvent {
  std::string_view uuid;
  std::string_view applicationId;
  std::string_view deviceId;
  std::string_view messageId;
  std::string_view messageType;
  std::string_view propertyBag;  // JSON text
  std::optional<std::string_view> requestId;
  std::optional<std::string_view> receiptDateUtc;  // nothing for a date that has no form, here and below
  std::optional<std::string_view> eventDateUtc;

  void addTo(ReceiptItems& items) const;
};

// Analytic events.
class QXEDeliveryReceiptPayloadCreator final : public ReceiptPayloadCreator {
 public:
  using ReceiptPayloadCreator::ReceiptPayloadCreator;

 private:
  std::optional<std::string_view> missingField(const std::optional<Info>& info) const override;
  std::string_view eventName() const override { return "DeliveryReceiptEvent"; }
  void addEvent(ReceiptItems& items, const AppGroupSDK::DeliveryReceiptPNModel& receipt, const Info& info,
                const std::optional<std::string>& receiptDateUtc) const override;
  QXPlatform::Dictionary makeBody(const Info& info, QXPlatform::Value nodes) const override;
  // Without a device record there is no header either, so nothing is sent; but the log says all that lacks.
  std::optional<QXPlatform::Dictionary> makeBodyWithoutEvents() const override;
};

// What the request says of its sender.
struct QXEDeliveryReceiptRequestHeader {
  std::string subscriberToken;
  std::string accessToken;
  std::string baseUrl;
  std::string path = "/devicestatistics/v1/analytic";
  std::string qxsdkVersion;

  ServiceProtocol::Headers toDictionary() const;
};

using QXEDeliveryReceiptRequest = ReceiptRequest<QXEDeliveryReceiptRequestHeader>;

class QXEDeliveryReceiptResponse final : public DeliveryReceiptResponse {};

class QXEDeliveryReceiptManager final : public ModuleReceiptManager<QXEDeliveryReceiptRequestHeader> {
 public:
  QXEDeliveryReceiptManager(std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
                            std::unique_ptr<const QXEDeliveryReceiptPayloadCreator> payloadCreator,
                            std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
                            std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider);

  std::string_view description() const override { return "QXEDeliveryReceiptManager"; }

 private:
  std::optional<QXEDeliveryReceiptRequestHeader> makeHeader(const std::optional<Info>& info) const override;
};

}  // namespace QXExtensionSDK
