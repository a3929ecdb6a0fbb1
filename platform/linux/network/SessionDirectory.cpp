#include "platform/linux/network/SessionDirectory.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace platform::network {

SessionDirectory::~SessionDirectory() {
  if (!path_.empty()) rmdir(path_.c_str());
}

int SessionDirectory::createFile(std::string& path) {
  const std::lock_guard lock(mutex_);
  if (path_.empty()) {
    std::error_code error;
    std::string directory = (std::filesystem::temp_directory_path(error) / "qx-downloads-XXXXXX").native();
    if (error) {
      errno = error.value();
      return -1;
    }
    if (mkdtemp(directory.data()) == nullptr) return -1;
    path_ = std::move(directory);
  }
  std::string file = path_ + "/download-XXXXXX";
  const int descriptor = mkostemp(file.data(), O_CLOEXEC);
  if (descriptor >= 0) path = std::move(file);
  return descriptor;
}

}  // namespace platform::network
