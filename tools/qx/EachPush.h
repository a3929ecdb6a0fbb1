#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/qx/PlacedPushes.h"
#include "tools/qx/PushDocument.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

// What commands that look at pushes are given.
struct PushInput {
  std::vector<std::string> files;  // as PlacedPushes takes them
  std::size_t jobs = 1;            // threads that look at pushes at the same time
};

// Calls `examine` with the text of every push, on several threads at once, and what that returns one after
// the other, in the order of the pushes, as long as standard output takes what comes of it; with one job all
// on the calling thread. Says on standard error which files cannot be read, and why, tells `unreadable`, and
// goes on. Returns the exit code: 1 when there was such a one, or one without a push, or when a call answered
// false.
using PushReport = std::function<bool()>;
int forEachPush(
    std::string_view command, const PushInput& input,
    const std::function<PushReport(const std::string& text, const PushPlace& place)>& examine,
    const std::function<void(const PushPlace& place, const QXPlatform::Error& reason)>& unreadable = {});

// Prints every push with what `change` makes of its userInfo; the reason of an error goes to standard error
// in its place. `report` hears of each that was changed. Threads and exit code as above.
int printEachChanged(
    const SimulatorOptions& simulator, std::string_view command, const PushInput& input,
    const std::function<QXPlatform::Result<QXPlatform::Dictionary>(const QXPlatform::Dictionary&)>& change,
    const std::function<void(const PushPlace& place, const QXPlatform::Dictionary& before,
                             const QXPlatform::Dictionary& after)>& report = {});

}  // namespace qx
