#pragma once

#include "QXPlatform/foundation/Value.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// Whether the carousel moves as its template says.
void checkTemplate(const QXPlatform::Value& richFeatures, Findings& findings);
// Whether every panel has a text, and does what its actions say.
void checkPanels(const QXPlatform::Value& richFeatures, Findings& findings);

}  // namespace qx
