#pragma once

#include <filesystem>

namespace QXPlatform {

// Where this process's program lies; empty when the system does not tell. Any thread.
std::filesystem::path executablePath();

}  // namespace QXPlatform
