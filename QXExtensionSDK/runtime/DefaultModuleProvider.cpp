#include "QXExtensionSDK/runtime/DefaultModuleProvider.h"

#include "QXExtensionSDK/decoration/AdvancedPushProcessor.h"
#include "QXExtensionSDK/decoration/CarouselAttachmentDecorator.h"
#include "QXExtensionSDK/decoration/DecompressionDecorator.h"
#include "QXExtensionSDK/decoration/DefaultMediaDownloader.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptProcessor.h"
#include "QXExtensionSDK/runtime/ClientExecutionProcessor.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

namespace {

std::unique_ptr<AsyncProcessing> makeAdvancedPushProcessor() {
  const auto report = std::make_shared<ThumbnailReport>();
  const Logger& logger = Logger::service();
  return std::make_unique<AdvancedPushProcessor>(
      std::make_unique<const DecompressionDecorator>(
          logger, std::make_unique<const ConcreteDecompressionContext>(logger)),
      ButtonRegistrationDecorator(logger),
      std::make_unique<const CarouselAttachmentDecorator>(std::make_unique<const CarouselMediaURLExtractor>(),
                                                          std::make_unique<DefaultMediaDownloader>(report),
                                                          report),
      logger);
}

std::unique_ptr<AsyncProcessing> makeDeliveryReceiptProcessor() {
  return std::make_unique<DeliveryReceiptProcessor>(
      std::make_unique<const AppGroupSDK::ContextModuleChecker>(Logger::service()),
      AppGroupSDK::AppIdProvider(), std::make_unique<const DeliveryReceiptDataParser>());
}

}  // namespace

std::vector<std::unique_ptr<AsyncProcessing>> DefaultModuleProvider::processors() const {
  std::vector<std::unique_ptr<AsyncProcessing>> processors;
  processors.reserve(3);
  processors.push_back(std::make_unique<ClientExecutionProcessor>());
  processors.push_back(makeAdvancedPushProcessor());
  processors.push_back(makeDeliveryReceiptProcessor());
  return processors;
}

}  // namespace QXExtensionSDK
