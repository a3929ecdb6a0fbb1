#pragma once

#include <string_view>

#include "QXExtensionSDK/content/CarouselViewController.h"
#include "platform/foundation/Value.h"
#include "platform/ui/ContentExtensionHost.h"

namespace qx {

// How the carousel stands after a step. `screen` is null when there is none.
platform::Dictionary reportCarousel(std::string_view step, platform::ContentExtensionHost& host,
                                    const QXExtensionSDK::CarouselViewController* screen);

}  // namespace qx
