#pragma once

#include "QXPlatform/foundation/Value.h"
#include "tools/qx/PushDocument.h"
#include "tools/qx/PushSize.h"
#include "tools/qx/check/Findings.h"

namespace qx {

// What a push carries beside its rich features.

// Whether the push service takes it.
void checkSize(const PushDocument& push, PushLimit limit, Findings& findings);
// Whether the operating system hands it to the extensions.
void checkAps(const QXPlatform::Dictionary& userInfo, bool hasCarousel, Findings& findings);
// Whether it shows the push's own texts.
void checkAlert(const QXPlatform::Dictionary& userInfo, Findings& findings);
// Whether it shows a number and makes itself heard.
void checkBadgeAndSound(const QXPlatform::Dictionary& userInfo, Findings& findings);
// Whether the framework acts on it.
void checkSender(const QXPlatform::Dictionary& userInfo, Findings& findings);
// Whether it leads to a receipt, and a whole one.
void checkReceipt(const QXPlatform::Dictionary& userInfo, Findings& findings);
// Whether a module is meant.
void checkContext(const QXPlatform::Dictionary& userInfo, Findings& findings);
// Whether a tap on its carousel does anything.
void checkClick(const QXPlatform::Dictionary& userInfo, Findings& findings);

}  // namespace qx
