#pragma once

#include <string_view>
#include <vector>

#include "tools/qx/EachPush.h"
#include "tools/qx/PushSize.h"
#include "tools/qx/check/FindingFormat.h"

namespace qx {

// Everything that a device would refuse, ignore or replace in the push of that text, which stands at that
// place of a file; a text that is no push has one finding, which says why. Any thread.
std::vector<LocatedFinding> findPlaced(std::string_view text, const PushPlace& place, PushLimit limit);

// The one finding of a file that cannot be read or holds no push.
LocatedFinding unreadableFile(const PushPlace& place, const QXPlatform::Error& reason);

}  // namespace qx
