#include "QXExtensionSDK/decoration/DecompressionContext.h"

namespace QXExtensionSDK {

std::unique_ptr<const DecompressStrategy> ConcreteDecompressionContext::strategy(
    const QXPlatform::UNNotificationRequest& /*request*/) const {
  logger_.debug(LogCategory::decompression, "Deflate decompression strategy selected");
  return std::make_unique<const DeflateDecompressStrategy>(
      Logger::service(), std::make_unique<const DefaultDeflateBufferCapacityProvider>());
}

}  // namespace QXExtensionSDK
