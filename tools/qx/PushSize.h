#pragma once

#include <cstddef>

#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/foundation/Value.h"

namespace qx {

// Whose limit a push has to keep to.
enum class PushLimit { apns, webPush };
constexpr auto rawValues(QXPlatform::RawValuesOf<PushLimit>) {
  return std::to_array<QXPlatform::RawCase<PushLimit>>(
      {{PushLimit::apns, "apns"}, {PushLimit::webPush, "web-push"}});
}

// What goes through; a Web Push has less room, since it is sealed.
constexpr std::size_t mostPushBytes(PushLimit limit) {
  return limit == PushLimit::apns ? 4096 : 3993;
}

// The bytes of a push on its way, which carries no white space.
inline std::size_t pushSize(const QXPlatform::Dictionary& userInfo) {
  return userInfo.description().size();
}

}  // namespace qx
