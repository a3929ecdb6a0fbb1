#include "QXExtensionSDK/payload/SenderGate.h"

#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

bool shouldProceed(const QXPlatform::UNNotificationRequest& request, std::string_view processorName) {
  if (VTQXUtility::isVTQXPushNotification(request)) return true;
  logBackingOut(processorName);
  return false;
}

void logBackingOut(std::string_view processorName) {
  Logger::service().debug(LogCategory::serviceWorker,
                          "Backing out as shouldProceed() returned false, class=", processorName);
}

}  // namespace QXExtensionSDK
