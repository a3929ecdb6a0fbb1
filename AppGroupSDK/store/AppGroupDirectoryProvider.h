#pragma once

#include <string>

#include "AppGroupSDK/store/DataStoreDirectoryProviding.h"

namespace AppGroupSDK {

// The container of the application group that the bundle names under VT_QUORIX_APP_GROUP_KEY; nothing when
// the key is missing or holds no text, or when there is no such container. Looked up afresh at each call.
class AppGroupDirectoryProvider final : public DataStoreDirectoryProviding {
 public:
  std::optional<QXPlatform::URL> containerURL() const override;

  // The group's identifier, as the bundle has it.
  static std::optional<std::string> groupIdentifier();
};

}  // namespace AppGroupSDK
