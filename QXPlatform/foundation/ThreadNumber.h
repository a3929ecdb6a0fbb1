#pragma once

#include <cstdint>

namespace QXPlatform {

// The number by which the system's own tools know the calling thread.
std::int64_t currentThreadNumber();

}  // namespace QXPlatform
