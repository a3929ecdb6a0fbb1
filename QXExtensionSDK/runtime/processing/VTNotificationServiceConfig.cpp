#include "QXExtensionSDK/runtime/processing/VTNotificationServiceConfig.h"

#include <cstdlib>

namespace QXExtensionSDK {

namespace {

// Asked once: the environment is not to be read while other threads may change it.
LogLevel levelOfEnvironment() {
  static const LogLevel level = [] {
    const char* const name = std::getenv("QX_LOG_LEVEL");
    return name == nullptr ? LogLevel::none
                           : QXPlatform::fromRawValue<LogLevel>(name).value_or(LogLevel::none);
  }();
  return level;
}

}  // namespace

VTNotificationServiceConfig VTNotificationServiceConfig::defaultConfig() {
  return {levelOfEnvironment(), true};
}

}  // namespace QXExtensionSDK
