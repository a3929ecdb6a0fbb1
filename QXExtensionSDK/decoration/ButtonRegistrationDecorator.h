#pragma once

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

// The place where notification categories and their buttons would be registered. The push payload defines
// none, so nothing is.
class ButtonRegistrationDecorator {
 public:
  explicit ButtonRegistrationDecorator(const Logger& logger) : logger_(logger) {}

  const Logger& logger() const { return logger_; }

 private:
  const Logger& logger_;
};

}  // namespace QXExtensionSDK
