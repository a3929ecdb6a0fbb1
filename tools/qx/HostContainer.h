#pragma once

#include <filesystem>

#include "QXPlatform/foundation/Result.h"

namespace qx {

// Makes the app group's container, the owner's alone from its first instant, if it is not there. Gives its
// path, or why there is none.
QXPlatform::Result<std::filesystem::path> makeContainer();

}  // namespace qx
