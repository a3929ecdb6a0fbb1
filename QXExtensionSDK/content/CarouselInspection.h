#pragma once

#include <string_view>

#include "QXExtensionSDK/content/CarouselViewController.h"
#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

// How a carousel stands, for a simulator; `screen` is null before there is one. Main thread.
QXPlatform::Dictionary inspectCarousel(const CarouselViewController* screen, bool isShown);

// "next", "back", "tick" or "tap", as the user or time does it, until a click is saved; any other step does
// nothing.
void takeCarouselStep(CarouselViewController* screen, std::string_view step);

}  // namespace QXExtensionSDK
