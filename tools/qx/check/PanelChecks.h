#pragma once

#include "QXPlatform/foundation/Value.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// Whether there is something to show, and whether it moves as the template says.
void checkTemplate(const QXPlatform::Value& richFeatures, Findings& findings);
// Whether every panel has a text that can be read, and does what its actions say.
void checkPanels(const QXPlatform::Value& richFeatures, Findings& findings);

}  // namespace qx
