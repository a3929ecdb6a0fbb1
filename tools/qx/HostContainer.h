#pragma once

#include <filesystem>
#include <string_view>

#include "QXPlatform/foundation/Result.h"

namespace qx {

// Why there is no container where the environment names no place for any.
QXPlatform::Error noContainersRoot();

// Says so on standard error where it is the case, for a command that goes on without a container.
void warnOfNoContainersRoot(std::string_view command);

// Makes the app group's container, the owner's alone from its first instant, if it is not there. Gives its
// path, or why there is none.
QXPlatform::Result<std::filesystem::path> makeContainer();

}  // namespace qx
