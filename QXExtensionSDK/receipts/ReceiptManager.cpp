#include "QXExtensionSDK/receipts/ReceiptManager.h"

#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

namespace {

bool isWebAddress(const QXPlatform::URL& url) {
  return (url.scheme() == "http" || url.scheme() == "https") && !url.host().empty();
}

}  // namespace

ReceiptManager::ReceiptManager(std::string_view shortName,
                               std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
                               std::unique_ptr<const ReceiptPayloadCreator> payloadCreator,
                               std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
                               std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider)
    : shortName_(shortName),
      repositoryManager_(std::move(repositoryManager)),
      payloadCreator_(std::move(payloadCreator)),
      receiptHandler_(std::move(receiptHandler)),
      appDeviceInfoProvider_(std::move(appDeviceInfoProvider)) {}

bool ReceiptManager::storeReceipt(const DeliveryReceiptData& data) {
  return repositoryManager_->storeReceipt(data.messageId, data.requestId, data.messageType,
                                          data.propertyBag) == AppGroupSDK::DataStoreStatus::success;
}

std::optional<Receipts> ReceiptManager::pendingReceipts() {
  auto receipts = repositoryManager_->fetchPendingReceipts();
  if (receipts && !receipts->empty()) return receipts;
  Logger::service().debug(LogCategory::deliveryReceipt, "No pending receipts to send for ", shortName_);
  return std::nullopt;
}

void ReceiptManager::sendReceipts(ReceiptCompletion completion) {
  auto receipts = pendingReceipts();
  if (!receipts) return completion(true);
  sendReceipts(*std::move(receipts), std::move(completion));
}

void ReceiptManager::sendReceipts(Receipts receipts, ReceiptCompletion completion) {
  auto payload = payloadCreator_->createPayload(receipts);
  if (!payload) return completion(false);
  const auto request = makeRequest(appDeviceInfoProvider_->appDeviceInfo(), *std::move(payload));
  if (request == nullptr) {
    Logger::service().error(LogCategory::deliveryReceipt, "DeliveryReceiptRequest creation failure");
    return completion(false);
  }
  Logger::service().debug(LogCategory::deliveryReceipt, "Sending DeliveryReceipt request: ", *request);
  receiptHandler_->send(*request, [repository = repositoryManager_, receipts = std::move(receipts),
                                   completion = std::move(completion)](bool succeeded) {
    repository->handleSendResult(succeeded, receipts, completion);
  });
}

std::optional<QXPlatform::URL> ReceiptManager::makeBaseURL(const std::optional<Info>& info) {
  auto baseURL = info ? QXPlatform::URL::parse(info->baseUrl()) : std::nullopt;
  if (baseURL && !isWebAddress(*baseURL)) baseURL.reset();
  if (!baseURL) Logger::service().error(LogCategory::deliveryReceipt, "Base URL not available");
  return baseURL;
}

void ReceiptManager::logMissingHeaders() const {
  Logger::service().error(LogCategory::deliveryReceipt, shortName_, " Request Headers not available");
}

}  // namespace QXExtensionSDK
