#pragma once

#include <vector>

#include "tools/qx/PushDocument.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// Everything that a device would refuse, ignore or replace in the push.
std::vector<Finding> checkPush(const PushDocument& push);

}  // namespace qx
