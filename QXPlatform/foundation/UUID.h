#pragma once

#include <string>

namespace QXPlatform {

// A fresh random (version 4) UUID in upper case, 8-4-4-4-12. Any thread.
std::string makeUUIDString();

}  // namespace QXPlatform
