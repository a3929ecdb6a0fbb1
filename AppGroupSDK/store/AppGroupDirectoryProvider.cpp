#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"

#include "platform/files/Container.h"
#include "platform/foundation/Bundle.h"

namespace AppGroupSDK {

std::optional<platform::URL> AppGroupDirectoryProvider::containerURL() const {
  const auto group = groupIdentifier();
  return group ? platform::containerURLForSecurityApplicationGroupIdentifier(*group) : std::nullopt;
}

std::optional<std::string> AppGroupDirectoryProvider::groupIdentifier() {
  const auto* entry = platform::Bundle::main().objectForInfoDictionaryKey("VT_QUORIX_APP_GROUP_KEY");
  const auto text = entry == nullptr ? std::nullopt : entry->string();
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

}  // namespace AppGroupSDK
