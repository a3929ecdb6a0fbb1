#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

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
std::size_t pushSize(const QXPlatform::Dictionary& userInfo);

// The bytes that each key takes with its value, the largest first.
std::vector<std::pair<std::string, std::size_t>> sizesByKey(const QXPlatform::Dictionary& userInfo);

}  // namespace qx
