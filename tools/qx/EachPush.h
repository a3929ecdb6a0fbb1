#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/qx/PushDocument.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

// Which push is spoken of.
struct PushPlace {
  std::string name;                 // for a message: "pushes.ndjson: line 3"
  std::optional<std::size_t> line;  // when the input holds several pushes; counted from 1
};

// Hands over every push of a file, as long as standard output takes what comes of them. Says on standard
// error which are none, and why, and goes on. Returns the exit code: 1 when there was such a one, when
// `handle` answered false for one, or when there was no push.
int forEachPush(std::string_view command, const std::string& file,
                const std::function<bool(const PushDocument& push, const PushPlace& place)>& handle);

// Prints every push of a file with what `change` makes of its userInfo; the reason of an error goes to
// standard error in its place. `report` hears of each that was changed. The exit code as above.
int printEachChanged(
    const SimulatorOptions& simulator, std::string_view command, const std::string& file,
    const std::function<QXPlatform::Result<QXPlatform::Dictionary>(const QXPlatform::Dictionary&)>& change,
    const std::function<void(const PushPlace& place, const QXPlatform::Dictionary& before,
                             const QXPlatform::Dictionary& after)>& report = {});

}  // namespace qx
