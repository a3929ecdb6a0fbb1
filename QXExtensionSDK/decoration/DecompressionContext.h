#pragma once

#include <memory>

#include "QXExtensionSDK/decoration/DecompressStrategy.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXExtensionSDK {

// Chooses how the payload of a request is decompressed. Any thread.
class DecompressionContext {
 public:
  virtual ~DecompressionContext() = default;
  // Null when there is no way.
  virtual std::unique_ptr<const DecompressStrategy> strategy(
      const QXPlatform::UNNotificationRequest& request) const = 0;
};

// Deflate, whatever the request.
class ConcreteDecompressionContext final : public DecompressionContext {
 public:
  explicit ConcreteDecompressionContext(const Logger& logger) : logger_(logger) {}

  std::unique_ptr<const DecompressStrategy> strategy(
      const QXPlatform::UNNotificationRequest& request) const override;

 private:
  const Logger& logger_;
};

}  // namespace QXExtensionSDK
