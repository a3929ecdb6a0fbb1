#pragma once

#include <optional>
#include <string>

#include "QXPlatform/files/FileDescriptor.h"

namespace QXPlatform {

// Who holds a lock on an open file, such as "process 4711 (host)"; nothing when the system does not tell. Any
// thread.
std::optional<std::string> lockHolder(const FileDescriptor& file);

}  // namespace QXPlatform
