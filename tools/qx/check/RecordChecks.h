#pragma once

#include "QXPlatform/foundation/Value.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// In every object of the rich features that the framework reads: keys that it does not, and colours that are
// none.
void checkRecords(const QXPlatform::Value& richFeatures, Findings& findings);

// In the frame of a full request, around the userInfo: keys that are not read.
void checkRequest(const QXPlatform::Dictionary& request, Findings& findings);

}  // namespace qx
