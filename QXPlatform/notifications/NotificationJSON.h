#pragma once

#include <memory>
#include <optional>
#include <string>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXPlatform {

// What a request is called beside what its push says.
struct RequestNaming {
  std::optional<std::string> identifier = {};  // whatever the push says
  std::optional<std::string> otherwise = {};   // when the push brings none; without one a fresh UUID
};

// Notifications as JSON, the form in which they reach and leave an extension's process. Any thread.
//
// A push is either what travels over the air, an object with "aps": the whole of it is the userInfo, and
// title, subtitle, body, badge and sound come from inside "aps"; or a full request:
//
//   {"identifier": "...", "content": {"title", "subtitle", "body", "badge", "sound", "userInfo": {...},
//                                     "attachments": [{"identifier", "url"}]}}
//
// Every member is optional but "content"; what a push leaves unnamed is named as `naming` says. What "aps"
// holds in another shape than it should is left out; in a full request it is an error that names the place.
Result<std::shared_ptr<const UNNotificationRequest>> notificationRequestFromJSON(
    const Value& push, const RequestNaming& naming = {});

// As "content" above; absent values are left out, "userInfo" and "attachments" are always there.
Dictionary notificationContentToJSON(const NotificationProperties& properties);

// A full request.
Dictionary notificationRequestToJSON(const UNNotificationRequest& request);

}  // namespace QXPlatform
