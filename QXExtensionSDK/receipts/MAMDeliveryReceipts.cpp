#include "QXExtensionSDK/receipts/MAMDeliveryReceipts.h"

#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/Bundle.h"
#include "QXPlatform/foundation/Device.h"
#include "QXPlatform/foundation/Locale.h"

namespace QXExtensionSDK {

std::optional<std::string_view> MAMDeliveryReceiptPayloadCreator::missingField(
    const std::optional<Info>& info) const {
  if (!info) return "deviceId";
  return info->sessionId() ? std::nullopt : std::optional<std::string_view>("sessionId");
}

void MAMDeliveryReceiptPayloadCreator::addEvent(ReceiptItems& items,
                                                const AppGroupSDK::DeliveryReceiptPNModel& receipt,
                                                const Info& info,
                                                const std::optional<std::string>& receiptDateUtc) const {
  items.add("RECEIVED", {{"category", "engagement"},
                         {"dateTime", formatted(receipt.eventDateUtc())},
                         {"eventId", receipt.uuid()},
                         {"messageId", receipt.messageId()},
                         {"propertyBag", receipt.propertyBag()},
                         {"receiptDateUtc", receiptDateUtc},
                         {"sessionId", info.sessionId()}});
}

QXPlatform::Dictionary MAMDeliveryReceiptPayloadCreator::makeBody(const Info& info,
                                                                  QXPlatform::Value nodes) const {
  const auto& device = QXPlatform::Device::current();
  return {{"deviceId", info.deviceId()},
          {"deviceModel", device.name},
          {"devicePlatform", "iPhone OS"},
          {"deviceVersion", device.systemVersion},
          {"locale", QXPlatform::Locale::currentIdentifier()},
          {"mobileAppName", QXPlatform::Bundle::main().bundleIdentifier().value_or("")},
          {"nodes", std::move(nodes)}};
}

ServiceProtocol::Headers MAMDeliveryReceiptRequestHeader::toDictionary() const {
  return {{"x-vlto-mobile-app-id", appId},
          {"x-vlto-tenant-id", tenantId},
          {"Authorization", "Bearer " + accessToken},
          {"Content-Type", "application/json"}};
}

MAMDeliveryReceiptManager::MAMDeliveryReceiptManager(
    std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
    std::unique_ptr<const MAMDeliveryReceiptPayloadCreator> payloadCreator,
    std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
    std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider, std::string appId)
    : ModuleReceiptManager("MAM", std::move(repositoryManager), std::move(payloadCreator),
                           std::move(receiptHandler), std::move(appDeviceInfoProvider)),
      appId_(std::move(appId)) {}

std::optional<MAMDeliveryReceiptRequestHeader> MAMDeliveryReceiptManager::makeHeader(
    const std::optional<Info>& info) const {
  if (appId_.empty()) {
    Logger::service().error(LogCategory::deliveryReceipt, "UMA ApplicationId not available");
    return std::nullopt;
  }
  if (!info || info->tenantId().value_or("").empty()) {
    Logger::service().error(LogCategory::deliveryReceipt, "UMA TenantId not available");
    return std::nullopt;
  }
  return MAMDeliveryReceiptRequestHeader{.accessToken = info->accessToken(),
                                         .baseUrl = info->baseUrl(),
                                         .appId = appId_,
                                         .tenantId = *info->tenantId()};
}

}  // namespace QXExtensionSDK
