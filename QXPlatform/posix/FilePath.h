#pragma once

#include <optional>
#include <string>

#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// The absolute path of a file URL; nothing for any other URL, or when the path holds a NUL, where the system
// would cut it.
inline std::optional<std::string> filePath(const URL& url) {
  if (!url.isFileURL()) return std::nullopt;
  std::string path = url.filePath();
  if (!path.starts_with('/') || path.find('\0') != std::string::npos) return std::nullopt;
  return path;
}

}  // namespace QXPlatform
