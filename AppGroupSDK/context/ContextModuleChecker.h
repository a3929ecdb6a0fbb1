#pragma once

#include "AppGroupSDK/ExtensionModuleName.h"
#include "AppGroupSDK/context/PNContextInfo.h"
#include "AppGroupSDK/context/PNDestinationModuleMapping.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace AppGroupSDK {

// Says whether a module is to act on a push. Any thread.
class ContextModuleChecking {
 public:
  virtual ~ContextModuleChecking() = default;
  virtual bool shouldProceed(ExtensionModuleName module, const PNContextInfo& context) const = 0;
};

// True when the context names the module; a push without a usable context is for the engagement module. Logs
// what the context said.
class ContextModuleChecker final : public ContextModuleChecking {
 public:
  // `logger`: that of the extension that runs; must outlive the checker.
  explicit ContextModuleChecker(const QXExtensionSDK::Logger& logger) : logger_(logger) {}

  bool shouldProceed(ExtensionModuleName module, const PNContextInfo& context) const override;

 private:
  const QXExtensionSDK::Logger& logger_;
  PNDestinationModuleMapping mapping_;
};

}  // namespace AppGroupSDK
