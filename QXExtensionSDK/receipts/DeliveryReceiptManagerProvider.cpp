#include "QXExtensionSDK/receipts/DeliveryReceiptManagerProvider.h"

#include <chrono>
#include <utility>

#include "QXExtensionSDK/receipts/DeliveryReceiptRepository.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptsPNStore.h"
#include "QXExtensionSDK/receipts/MAMDeliveryReceipts.h"
#include "QXExtensionSDK/receipts/MAMEventResponse.h"
#include "QXExtensionSDK/receipts/QXEDeliveryReceipts.h"
#include "QXExtensionSDK/service/DefaultRequestBuilder.h"
#include "QXExtensionSDK/service/JSONResponseDecoder.h"
#include "QXExtensionSDK/service/URLSessionExecutor.h"

namespace QXExtensionSDK {

namespace {

using AppGroupSDK::ExtensionModuleName;

constexpr auto kTimeoutIntervalForRequest = std::chrono::seconds(20);
// The push that it belongs to is long shown by then.
constexpr auto kTimeoutIntervalForResource = std::chrono::seconds(60);

std::shared_ptr<DeliveryReceiptRepository> makeRepository(ExtensionModuleName module,
                                                          const std::string& appId) {
  const auto run = std::make_shared<ReceiptRun>(module, appId);
  return std::make_shared<DeliveryReceiptRepositoryManager>(
      std::make_unique<DeliveryReceiptsPNStore>(
          std::make_unique<const AppGroupSDK::DeliveryReceiptsModelStore>(module, appId), run),
      run);
}

template <typename Response>
std::unique_ptr<const DeliveryReceiptHandling> makeHandler() {
  QXPlatform::URLSessionConfiguration configuration;
  configuration.timeoutIntervalForRequest = kTimeoutIntervalForRequest;
  configuration.timeoutIntervalForResource = kTimeoutIntervalForResource;
  return std::make_unique<const DeliveryReceiptHandler>(std::make_unique<const DeliveryReceiptService>(
      ServiceManager(std::make_unique<const DefaultRequestBuilder>(),
                     std::make_shared<const JSONResponseDecoder<Response>>(),
                     std::make_unique<URLSessionExecutor>(configuration))));
}

}  // namespace

DeliveryReceiptManagerProvider::DeliveryReceiptManagerProvider(ExtensionModuleName module, std::string appId)
    : module_(module), appId_(std::move(appId)) {}

std::shared_ptr<DeliveryReceiptManaging> DeliveryReceiptManagerProvider::makeManager() const {
  auto repository = makeRepository(module_, appId_);
  const auto deviceInfo = std::make_shared<AppDeviceInfoProvider>(module_, appId_);
  if (module_ == ExtensionModuleName::quorixEngagement) {
    return std::make_shared<QXEDeliveryReceiptManager>(
        std::move(repository), std::make_unique<const QXEDeliveryReceiptPayloadCreator>(deviceInfo),
        makeHandler<QXEDeliveryReceiptResponse>(), deviceInfo);
  }
  return std::make_shared<MAMDeliveryReceiptManager>(
      std::move(repository), std::make_unique<const MAMDeliveryReceiptPayloadCreator>(deviceInfo),
      makeHandler<MAMEventResponse>(), deviceInfo, appId_);
}

}  // namespace QXExtensionSDK
