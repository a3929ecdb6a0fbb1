#pragma once

#include "QXPlatform/foundation/Value.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// In every object of the rich features that the framework reads: keys that it does not, and colours that are
// none.
void checkRecords(const QXPlatform::Value& richFeatures, Findings& findings);

}  // namespace qx
