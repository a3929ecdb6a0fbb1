#include "tools/qx/PushDocument.h"

#include <utility>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/NotificationJSON.h"

namespace qx {

using QXPlatform::Dictionary;

PushDocument::PushDocument(Dictionary push, Dictionary userInfo)
    : push_(std::move(push)), userInfo_(std::move(userInfo)) {}

QXPlatform::Result<PushDocument> PushDocument::parse(std::string_view text) {
  const auto push = QXPlatform::parseJSON(text);
  if (!push) return push.error();
  const auto request = QXPlatform::notificationRequestFromJSON(*push);
  if (!request) return request.error();
  return PushDocument(*push->dictionary(), (*request)->content->userInfo());
}

bool PushDocument::isFullRequest() const {
  return !push_.contains("aps");
}

std::string_view PushDocument::userInfoPath() const {
  return isFullRequest() ? "/content/userInfo" : "";
}

Dictionary PushDocument::replacingUserInfo(const Dictionary& userInfo) const {
  if (!isFullRequest()) return userInfo;
  return push_.setting("content", push_["content"].dictionary()->setting("userInfo", userInfo));
}

}  // namespace qx
