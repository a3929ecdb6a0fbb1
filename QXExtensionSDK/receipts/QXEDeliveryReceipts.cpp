#include "QXExtensionSDK/receipts/QXEDeliveryReceipts.h"

#include <utility>

#include "QXExtensionSDK/receipts/UserAgentProvider.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

namespace {

constexpr int kEventType = 112;

}  // namespace

void DeliveryReceiptEvent::addTo(ReceiptItems& items) const {
  items.add(kEventType, {{"applicationId", applicationId},
                         {"deviceId", deviceId},
                         {"eventDateUtc", eventDateUtc},
                         {"messageId", messageId},
                         {"messageType", messageType},
                         {"propertyBag", propertyBag},
                         {"receiptDateUtc", receiptDateUtc},
                         {"requestId", requestId.value_or("").empty() ? std::nullopt : requestId},
                         {"uuid", uuid}});
}

std::optional<std::string_view> QXEDeliveryReceiptPayloadCreator::missingField(
    const std::optional<Info>& info) const {
  return info ? std::nullopt : std::optional<std::string_view>("applicationId");
}

void QXEDeliveryReceiptPayloadCreator::addEvent(ReceiptItems& items,
                                                const AppGroupSDK::DeliveryReceiptPNModel& receipt,
                                                const Info& info,
                                                const std::optional<std::string>& receiptDateUtc) const {
  const auto eventDateUtc = formatted(receipt.eventDateUtc());
  const auto& propertyBag = receipt.propertyBag();
  const DeliveryReceiptEvent event{.uuid = receipt.uuid(),
                                   .applicationId = info.applicationId(),
                                   .deviceId = info.deviceId(),
                                   .messageId = receipt.messageId(),
                                   .messageType = receipt.messageType(),
                                   .propertyBag = propertyBag ? std::string_view(*propertyBag) : "",
                                   .requestId = receipt.requestId(),
                                   .receiptDateUtc = receiptDateUtc,
                                   .eventDateUtc = eventDateUtc};
  event.addTo(items);
}

QXPlatform::Dictionary QXEDeliveryReceiptPayloadCreator::makeBody(const Info& info,
                                                                  QXPlatform::Value nodes) const {
  return {
      {"applicationId", info.applicationId()}, {"deviceId", info.deviceId()}, {"nodes", std::move(nodes)}};
}

std::optional<QXPlatform::Dictionary> QXEDeliveryReceiptPayloadCreator::makeBodyWithoutEvents() const {
  return QXPlatform::Dictionary{{"applicationId", ""}, {"deviceId", ""}, {"nodes", ReceiptItems(0).nodes()}};
}

ServiceProtocol::Headers QXEDeliveryReceiptRequestHeader::toDictionary() const {
  return {{"User-Agent", UserAgentProvider::userAgent(qxsdkVersion)},
          {"X-Subscriber-Token", subscriberToken},
          {"Authorization", "Bearer " + accessToken},
          {"Content-Type", "application/json"}};
}

QXEDeliveryReceiptManager::QXEDeliveryReceiptManager(
    std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
    std::unique_ptr<const QXEDeliveryReceiptPayloadCreator> payloadCreator,
    std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
    std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider)
    : ModuleReceiptManager("QXE", std::move(repositoryManager), std::move(payloadCreator),
                           std::move(receiptHandler), std::move(appDeviceInfoProvider)) {}

std::optional<QXEDeliveryReceiptRequestHeader> QXEDeliveryReceiptManager::makeHeader(
    const std::optional<Info>& info) const {
  if (!info || info->accessToken().empty() || info->subscriberToken().value_or("").empty()) {
    Logger::service().error(LogCategory::deliveryReceipt, "AccessToken not available");
    return std::nullopt;
  }
  return QXEDeliveryReceiptRequestHeader{.subscriberToken = *info->subscriberToken(),
                                         .accessToken = info->accessToken(),
                                         .baseUrl = info->baseUrl(),
                                         .qxsdkVersion = info->qxsdkVersion()};
}

}  // namespace QXExtensionSDK
