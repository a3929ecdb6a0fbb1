#include "QXPlatform/libraries/network/DownloadDirectory.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace QXPlatform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kNamePrefix = "qx-downloads-";

}  // namespace

DownloadDirectory& DownloadDirectory::shared() {
  // Never destroyed: threads may still load while the process exits.
  static NeverDestroyed<DownloadDirectory> directory;
  return *directory;
}

// Made with the first session, so before its first transfer: what runs at the exit runs after transfers
// have stopped.
DownloadDirectory::DownloadDirectory() {
  static_cast<void>(std::atexit([] { shared().removeAll(); }));
  removeUnlockedDirectories(kNamePrefix, Leftovers::all);
}

Result<std::string> DownloadDirectory::makeSubdirectory() {
  const std::lock_guard lock(mutex_);
  // The second time, when the first one finds that somebody has cleaned up.
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (!directory_) {
      auto made = LockedDirectory::make(kNamePrefix);
      if (!made) return made.error();
      directory_.emplace(*std::move(made));
    }
    std::string subdirectory = directory_->path().native() + "/" + std::to_string(++made_);
    if (mkdir(subdirectory.c_str(), 0700) == 0) return subdirectory;
    if (errno != ENOENT) break;
    directory_.reset();
  }
  return Error{std::generic_category().message(errno)};
}

bool DownloadDirectory::contains(const fs::path& file) const {
  const std::lock_guard lock(mutex_);
  if (!directory_) return false;
  const std::string inside = directory_->path().native() + "/";
  return file.native().starts_with(inside) && file.lexically_normal().native().starts_with(inside);
}

void DownloadDirectory::removeAll() {
  const std::lock_guard lock(mutex_);
  std::error_code ignored;
  if (directory_) fs::remove_all(directory_->path(), ignored);
}

}  // namespace QXPlatform
