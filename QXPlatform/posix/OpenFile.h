#pragma once

#include <string>

#include "QXPlatform/files/FileDescriptor.h"

namespace QXPlatform {

// Opens what has this path, or sets errno. Waits out a want of descriptors or memory for up to two seconds;
// of one that lasts the log tells, since to the caller a file that cannot be read may be as good as none.
FileDescriptor openFile(const std::string& path, int flags);

}  // namespace QXPlatform
