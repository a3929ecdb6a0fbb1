#pragma once

#include <string>
#include <string_view>

#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

namespace qx {

// A push as its writer sees it: the JSON that was written, and where in it the userInfo stands.
class PushDocument {
 public:
  // Fails, saying why, for what is no push.
  static platform::Result<PushDocument> parse(std::string_view text);

  const platform::Dictionary& userInfo() const { return userInfo_; }
  // A JSON pointer; empty when the whole push is the userInfo.
  std::string_view userInfoPath() const;
  // The push with another userInfo.
  platform::Dictionary replacingUserInfo(const platform::Dictionary& userInfo) const;

 private:
  PushDocument(platform::Dictionary push, platform::Dictionary userInfo);
  bool isFullRequest() const;

  platform::Dictionary push_;
  platform::Dictionary userInfo_;
};

}  // namespace qx
