#pragma once

#include <optional>
#include <string>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/URL.h"
#include "agent/webpush/WebPush.h"

namespace qx {

// Whom a push goes to.
struct WebPushReceiver {
  QXPlatform::URL endpoint;
  QXAgent::Subscription subscription;
};

// From a file as a browser's `PushSubscription` writes itself, or as `qx-agent endpoint` prints it.
QXPlatform::Result<WebPushReceiver> readSubscription(const std::string& file);

// In whose name it goes there.
struct WebPushSender {
  QXPlatform::Data privateKey;
  std::string subject;
};

// From the file, or from $XDG_STATE_HOME/qx/vapid.json; one that is not there is made, with mode 0600, and
// standard error says so.
QXPlatform::Result<WebPushSender> readOrMakeSender(const std::optional<std::string>& file);

}  // namespace qx
