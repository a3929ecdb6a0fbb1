#pragma once

#include "QXPlatform/foundation/Value.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// Whether every panel's image has a URL that a device loads.
void checkImages(const QXPlatform::Value& richFeatures, Findings& findings);
// Whether the first panel's can be the notification's thumbnail.
void checkThumbnail(const QXPlatform::Value& richFeatures, Findings& findings);

}  // namespace qx
