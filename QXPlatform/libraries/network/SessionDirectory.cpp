#include "QXPlatform/libraries/network/SessionDirectory.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace QXPlatform {

namespace {

// The process's own: what lies in such a directory has been put there by its sessions.
std::string namePrefix() {
  return "qx-downloads-" + std::to_string(getpid()) + "-";
}

}  // namespace

SessionDirectory::~SessionDirectory() {
  if (!path_.empty()) rmdir(path_.c_str());
}

int SessionDirectory::createFile(std::string& path) {
  const std::lock_guard lock(mutex_);
  if (path_.empty()) {
    std::error_code error;
    std::string directory =
        (std::filesystem::temp_directory_path(error) / (namePrefix() + "XXXXXX")).native();
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

void SessionDirectory::discard(const std::filesystem::path& file) {
  const std::filesystem::path directory = file.parent_path();
  if (!directory.filename().native().starts_with(namePrefix())) return;
  std::error_code ignored;
  std::filesystem::remove(file, ignored);
  std::filesystem::remove(directory, ignored);
}

}  // namespace QXPlatform
