#pragma once

#include <cstddef>

#include "QXPlatform/foundation/Value.h"

namespace qx {

// What the push service takes.
inline constexpr std::size_t kMostPushBytes = 4096;

// The bytes of a push on its way, which carries no white space.
inline std::size_t pushSize(const QXPlatform::Dictionary& userInfo) {
  return userInfo.description().size();
}

}  // namespace qx
