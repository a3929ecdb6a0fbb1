#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"

#include <string_view>

#include "QXPlatform/files/Container.h"
#include "QXPlatform/foundation/Bundle.h"

namespace AppGroupSDK {

namespace {

// Lives as long as the bundle, which is for ever.
std::optional<std::string_view> groupInBundle() {
  return QXPlatform::Bundle::main().objectForInfoDictionaryKey("VT_QUORIX_APP_GROUP_KEY").string();
}

}  // namespace

std::optional<QXPlatform::URL> AppGroupDirectoryProvider::containerURL() const {
  const auto group = groupInBundle();
  return group ? QXPlatform::containerURLForSecurityApplicationGroupIdentifier(*group) : std::nullopt;
}

std::optional<std::string> AppGroupDirectoryProvider::groupIdentifier() {
  const auto group = groupInBundle();
  return group ? std::optional<std::string>(*group) : std::nullopt;
}

}  // namespace AppGroupSDK
