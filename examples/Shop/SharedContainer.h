#pragma once

#include <QString>

namespace shop {

// The app's side of the container that it shares with its extensions.

// Makes the container when it is not there, and stores under which id this app is known to the back end,
// without which no click and no receipt is recorded. False when that cannot be.
bool prepareContainer();

// The last tap in a carousel, in words; empty when there was none.
QString lastClick();

}  // namespace shop
