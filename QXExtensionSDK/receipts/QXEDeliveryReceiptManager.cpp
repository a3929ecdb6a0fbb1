#include "QXExtensionSDK/receipts/QXEDeliveryReceiptManager.h"

#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

QXEDeliveryReceiptManager::QXEDeliveryReceiptManager(
    std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
    QXEDeliveryReceiptPayloadCreator payloadCreator,
    std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
    std::shared_ptr<AppDeviceInfoProviding> appDeviceInfoProvider)
    : ReceiptManager("QXE", std::move(repositoryManager), std::move(receiptHandler)),
      payloadCreator_(std::move(payloadCreator)),
      appDeviceInfoProvider_(std::move(appDeviceInfoProvider)) {}

std::optional<QXPlatform::Dictionary> QXEDeliveryReceiptManager::makePayload(const Receipts& receipts) {
  return payloadCreator_.createPayload(receipts);
}

std::optional<QXEDeliveryReceiptRequestHeader> QXEDeliveryReceiptManager::makeHeader() {
  const auto& info = appDeviceInfoProvider_->appDeviceInfo();
  if (!info || info->accessToken().empty() || info->subscriberToken().value_or("").empty()) {
    Logger::service().error(LogCategory::deliveryReceipt, "AccessToken not available");
    return std::nullopt;
  }
  return QXEDeliveryReceiptRequestHeader{.subscriberToken = *info->subscriberToken(),
                                         .accessToken = info->accessToken(),
                                         .baseUrl = info->baseUrl(),
                                         .qxsdkVersion = info->qxsdkVersion()};
}

std::unique_ptr<const ServiceProtocol> QXEDeliveryReceiptManager::makeRequest(
    QXPlatform::Dictionary payload) {
  auto header = makeHeader();
  const auto baseURL = makeBaseURL(appDeviceInfoProvider_->appDeviceInfo());
  if (!baseURL) return nullptr;
  if (!header) {
    Logger::service().error(LogCategory::deliveryReceipt, "QXE Request Headers not available");
    return nullptr;
  }
  return std::make_unique<const QXEDeliveryReceiptRequest>(*baseURL, *std::move(header), std::move(payload));
}

}  // namespace QXExtensionSDK
