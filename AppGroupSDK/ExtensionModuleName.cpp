#include "AppGroupSDK/ExtensionModuleName.h"

#include "QXPlatform/foundation/FatalError.h"

namespace AppGroupSDK {

std::string_view stringValue(ExtensionModuleName module) {
  constexpr auto kNames = std::to_array<QXPlatform::RawCase<ExtensionModuleName>>(
      {{ExtensionModuleName::quorixEngagement, "quorixEngagement"},
       {ExtensionModuleName::mobileAppMessaging, "mobileAppMessaging"}});
  const std::string_view name = QXPlatform::nameIn(kNames, module);
  if (name.empty()) QXPlatform::fatalError("A module name other than 1 and 2");
  return name;
}

}  // namespace AppGroupSDK
