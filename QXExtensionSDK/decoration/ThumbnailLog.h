#pragma once

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

// The one line on a missing thumbnail that a developer who logs errors gets to see; what went wrong on the
// way is logged as detail beside it.
template <LogPiece... Pieces>
void logThumbnailNotAttached(Pieces&&... reason) {
  Logger::service().error(LogCategory::serviceGeneral, "Thumbnail not attached: ", reason...);
}

}  // namespace QXExtensionSDK
