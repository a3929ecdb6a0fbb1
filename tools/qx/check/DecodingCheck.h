#pragma once

#include "QXPlatform/foundation/Value.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// Whether the framework decodes the rich features: everything that keeps it from that.
void checkDecoding(const QXPlatform::Value& richFeatures, Findings& findings);

}  // namespace qx
