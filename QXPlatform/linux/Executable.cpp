#include "QXPlatform/foundation/Executable.h"

#include <system_error>

namespace QXPlatform {

std::filesystem::path executablePath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}

}  // namespace QXPlatform
