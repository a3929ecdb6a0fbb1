#pragma once

#include "platform/foundation/Value.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// What a push carries beside its rich features.

// Whether the push service takes it.
void checkSize(const platform::Dictionary& userInfo, Findings& findings);
// Whether the framework acts on it.
void checkSender(const platform::Dictionary& userInfo, Findings& findings);
// Whether it leads to a receipt, and a whole one.
void checkReceipt(const platform::Dictionary& userInfo, Findings& findings);
// Whether a module is meant.
void checkContext(const platform::Dictionary& userInfo, Findings& findings);
// Whether a tap on its carousel does anything.
void checkClick(const platform::Dictionary& userInfo, Findings& findings);

}  // namespace qx
