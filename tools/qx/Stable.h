#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "QXPlatform/foundation/Value.h"

namespace qx {

// What --stable puts in the place of what differs from run to run.

// "00000000-0000-0000-0000-000000000001" for 1, and so on.
std::string countedIdentifier(std::size_t number);

// A push's answer without its time; attachments that lie in the run's own directory read
// file:///stable/<identifier>/<name>.
QXPlatform::Dictionary stableAnswer(const QXPlatform::Dictionary& answer,
                                    const std::optional<std::filesystem::path>& attachments);

// A path in the group's container, or that itself, as /stable/<group>/<name>; any other as it is.
std::string stablePath(const std::string& path);

// A stored receipt, the `number`th that is printed, without its time.
QXPlatform::Dictionary stableReceipt(const QXPlatform::Dictionary& receipt, std::size_t number);

}  // namespace qx
