#pragma once

#include <string_view>

#include "QXExtensionSDK/content/CarouselViewController.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/ui/ContentExtensionHost.h"

namespace qx {

// How the carousel stands after a step. `screen` is null when there is none.
QXPlatform::Dictionary reportCarousel(std::string_view step, QXPlatform::ContentExtensionHost& host,
                                      const QXExtensionSDK::CarouselViewController* screen);

}  // namespace qx
