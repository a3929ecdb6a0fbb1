#include "QXExtensionSDK/receipts/DeliveryReceiptService.h"

#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

namespace {

void logFailure(const SendError& error) {
  const Logger& logger = Logger::service();
  logger.error(LogCategory::deliveryReceipt, "DeliveryReceiptRequest failed with error: ", error);
  const ErrorDetails details{error};
  if (details.exist()) {
    logger.error(LogCategory::deliveryReceipt, "DeliveryReceiptRequest failed with error details: ", details);
  }
}

}  // namespace

void DeliveryReceiptHandler::send(const ServiceProtocol& request, ReceiptCompletion completion) const {
  service_->send(request, [completion = std::move(completion)](const ServiceManager::Answer& answer) {
    if (answer) {
      Logger::service().debug(LogCategory::deliveryReceipt,
                              "DeliveryReceiptRequest is successful: ", *answer.value());
    } else {
      logFailure(answer.error());
    }
    completion(answer.ok());
  });
}

}  // namespace QXExtensionSDK
