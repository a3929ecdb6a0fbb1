#include "QXExtensionSDK/receipts/MAMDeliveryReceiptManager.h"

#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

MAMDeliveryReceiptManager::MAMDeliveryReceiptManager(
    std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
    MAMDeliveryReceiptPayloadCreator payloadCreator,
    std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
    std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider, std::string appId)
    : ReceiptManager("MAM", std::move(repositoryManager), std::move(receiptHandler)),
      payloadCreator_(std::move(payloadCreator)),
      appDeviceInfoProvider_(std::move(appDeviceInfoProvider)),
      appId_(std::move(appId)) {}

std::optional<QXPlatform::Dictionary> MAMDeliveryReceiptManager::makePayload(const Receipts& receipts) {
  return payloadCreator_.createPayload(receipts);
}

std::optional<MAMDeliveryReceiptRequestHeader> MAMDeliveryReceiptManager::makeHeader() {
  const auto& info = appDeviceInfoProvider_->appDeviceInfo();
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

std::unique_ptr<const ServiceProtocol> MAMDeliveryReceiptManager::makeRequest(
    QXPlatform::Dictionary payload) {
  auto header = makeHeader();
  const auto baseURL = makeBaseURL(appDeviceInfoProvider_->appDeviceInfo());
  if (!baseURL) return nullptr;
  if (!header) {
    Logger::service().error(LogCategory::deliveryReceipt, "MAM Request Headers not available");
    return nullptr;
  }
  return std::make_unique<const MAMDeliveryReceiptRequest>(*baseURL, *std::move(header), std::move(payload));
}

}  // namespace QXExtensionSDK
