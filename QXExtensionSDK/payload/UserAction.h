#pragma once

#include <optional>

#include "QXExtensionSDK/payload/Action.h"
#include "QXPlatform/foundation/URL.h"

namespace QXExtensionSDK {

// What a tap on a panel really does: an action of the payload whose target has proved to be a URL. A plain
// value.
struct UserAction {
  ActionType kind = ActionType::openApp;
  // Where a link leads; nothing for openApp.
  std::optional<QXPlatform::URL> url;

  friend bool operator==(const UserAction&, const UserAction&) = default;
};

using OpenAppUserAction = UserAction;
using OpenDeeplinkUserAction = UserAction;
using OpenWebUrlUserAction = UserAction;
using OpenCloudPageUserAction = UserAction;

}  // namespace QXExtensionSDK
