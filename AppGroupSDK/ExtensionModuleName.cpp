#include "AppGroupSDK/ExtensionModuleName.h"

#include "QXPlatform/foundation/FatalError.h"

namespace AppGroupSDK {

std::string_view stringValue(ExtensionModuleName module) {
  switch (module) {
    case ExtensionModuleName::quorixEngagement:
      return "quorixEngagement";
    case ExtensionModuleName::mobileAppMessaging:
      return "mobileAppMessaging";
  }
  QXPlatform::fatalError("A module name other than 1 and 2");
}

}  // namespace AppGroupSDK
