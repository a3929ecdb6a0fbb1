#pragma once

#include <vector>

#include "tools/qx/PushDocument.h"
#include "tools/qx/PushSize.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// Everything that a device would refuse, ignore or replace in the push. Any thread.
std::vector<Finding> checkPush(const PushDocument& push, PushLimit limit);

}  // namespace qx
