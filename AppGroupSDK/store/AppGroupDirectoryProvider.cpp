#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"

#include "QXPlatform/files/Container.h"
#include "QXPlatform/foundation/Bundle.h"

namespace AppGroupSDK {

std::optional<QXPlatform::URL> AppGroupDirectoryProvider::containerURL() const {
  const auto group = groupIdentifier();
  return group ? QXPlatform::containerURLForSecurityApplicationGroupIdentifier(*group) : std::nullopt;
}

std::optional<std::string> AppGroupDirectoryProvider::groupIdentifier() {
  const auto text = QXPlatform::Bundle::main().objectForInfoDictionaryKey("VT_QUORIX_APP_GROUP_KEY").string();
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

}  // namespace AppGroupSDK
