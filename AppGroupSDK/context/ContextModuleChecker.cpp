#include "AppGroupSDK/context/ContextModuleChecker.h"

namespace AppGroupSDK {

bool ContextModuleChecker::shouldProceed(ExtensionModuleName module, const PNContextInfo& context) const {
  const auto destination = mapping_.getDestination(module);
  if (destination == PNContextDestination::engagement && context.isInavlidOrAbsentContext()) return true;
  const bool contained = context.containsDestination(destination);
  if (contained) {
    logger_.debug(QXExtensionSDK::LogCategory::module,
                  "PN destination contains module: ", stringValue(module));
  } else {
    logger_.error(QXExtensionSDK::LogCategory::module,
                  "PN destination doesn't contain module: ", stringValue(module));
  }
  return contained;
}

}  // namespace AppGroupSDK
