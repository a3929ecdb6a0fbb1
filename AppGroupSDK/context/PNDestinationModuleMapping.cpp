#include "AppGroupSDK/context/PNDestinationModuleMapping.h"

#include <algorithm>

#include "QXPlatform/foundation/FatalError.h"

namespace AppGroupSDK {

std::optional<std::vector<ExtensionModuleName>> PNDestinationModuleMapping::getModules(
    const std::vector<PNContextDestination>& destinations) const {
  if (destinations.empty()) return std::nullopt;
  std::vector<ExtensionModuleName> modules;
  for (const auto destination : destinations) {
    const auto module = getModule(destination);
    if (module && std::ranges::find(modules, *module) == modules.end()) modules.push_back(*module);
  }
  return modules;
}

std::optional<ExtensionModuleName> PNDestinationModuleMapping::getModule(
    PNContextDestination destination) const {
  switch (destination) {
    case PNContextDestination::engagement:
      return ExtensionModuleName::quorixEngagement;
    case PNContextDestination::appMessaging:
      return ExtensionModuleName::mobileAppMessaging;
    case PNContextDestination::none:
    case PNContextDestination::unmapped:
      break;
  }
  return std::nullopt;
}

PNContextDestination PNDestinationModuleMapping::getDestination(ExtensionModuleName module) const {
  switch (module) {
    case ExtensionModuleName::quorixEngagement:
      return PNContextDestination::engagement;
    case ExtensionModuleName::mobileAppMessaging:
      return PNContextDestination::appMessaging;
  }
  QXPlatform::fatalError("A module name other than 1 and 2");
}

}  // namespace AppGroupSDK
