#pragma once

#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"

namespace qx {

// A push as its writer sees it: the JSON that was written, and where in it the userInfo stands.
class PushDocument {
 public:
  // Fails, saying why, for what is no push.
  static QXPlatform::Result<PushDocument> parse(std::string_view text);

  const QXPlatform::Dictionary& userInfo() const { return userInfo_; }
  // All of it.
  const QXPlatform::Dictionary& json() const { return push_; }
  bool isFullRequest() const;
  // A JSON pointer; empty when the whole push is the userInfo.
  std::string_view userInfoPath() const;
  // What a Web Push carries: all of it.
  QXPlatform::Dictionary sealed() const { return replacingUserInfo(userInfo_); }
  // The push with another userInfo.
  QXPlatform::Dictionary replacingUserInfo(const QXPlatform::Dictionary& userInfo) const;

 private:
  PushDocument(QXPlatform::Dictionary push, QXPlatform::Dictionary userInfo);

  QXPlatform::Dictionary push_;
  QXPlatform::Dictionary userInfo_;
};

}  // namespace qx
