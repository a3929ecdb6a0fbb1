#pragma once

#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"

namespace qx {

// A push as the content extension gets it, as a full request: with what is compressed in it inflated, as the
// service extension has done before the notification is shown. An error says why a text is no push.
QXPlatform::Result<QXPlatform::Dictionary> carouselRequest(std::string_view push);

// The first push of a file; "-" is standard input.
QXPlatform::Result<QXPlatform::Dictionary> readCarouselRequest(const std::string& file);

}  // namespace qx
