#pragma once

#include <filesystem>

#include "QXPlatform/foundation/Result.h"

namespace qx {

// Why there is no container where the environment names no place for any.
QXPlatform::Error noContainersRoot();

// Makes the app group's container, the owner's alone from its first instant, if it is not there. Gives its
// path, or why there is none.
QXPlatform::Result<std::filesystem::path> makeContainer();

}  // namespace qx
