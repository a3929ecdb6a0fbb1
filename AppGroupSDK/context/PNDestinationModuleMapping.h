#pragma once

#include <optional>
#include <vector>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "AppGroupSDK/context/PNContextInfo.h"

namespace AppGroupSDK {

// Which destination of a push context stands for which module.
struct PNDestinationModuleMapping {
  // Nothing for no destinations; otherwise their modules in order, each once, which may be none at all.
  std::optional<std::vector<ExtensionModuleName>> getModules(
      const std::vector<PNContextDestination>& destinations) const;
  std::optional<ExtensionModuleName> getModule(PNContextDestination destination) const;
  // A raw value that is no module stops the process.
  PNContextDestination getDestination(ExtensionModuleName module) const;
};

}  // namespace AppGroupSDK
