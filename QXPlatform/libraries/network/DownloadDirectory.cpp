#include "QXPlatform/libraries/network/DownloadDirectory.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace QXPlatform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kNamePrefix = "qx-downloads-";

Error lastError() {
  return {std::generic_category().message(errno)};
}

// A directory whose process lives is locked by it.
std::optional<FileDescriptor> lock(const fs::path& directory) {
  FileDescriptor opened(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!opened.valid() || flock(opened.get(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  return opened;
}

bool isOwn(const FileDescriptor& directory) {
  struct stat status {};
  return fstat(directory.get(), &status) == 0 && status.st_uid == geteuid();
}

void removeAbandoned(const fs::path& parent) {
  std::error_code error;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end; entry.increment(error)) {
    if (!entry->path().filename().native().starts_with(kNamePrefix)) continue;
    const auto held = lock(entry->path());
    std::error_code ignored;
    if (held && isOwn(*held)) fs::remove_all(entry->path(), ignored);
  }
}

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
  std::error_code error;
  const fs::path parent = fs::temp_directory_path(error);
  if (!error) removeAbandoned(parent);
}

Result<std::string> DownloadDirectory::makeSubdirectory() {
  const std::lock_guard lock(mutex_);
  // The second time, when the first one finds that somebody has cleaned up.
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (path_.empty()) {
      if (auto failed = make()) return *std::move(failed);
    }
    std::string subdirectory = path_ + "/" + std::to_string(++made_);
    if (mkdir(subdirectory.c_str(), 0700) == 0) return subdirectory;
    if (errno != ENOENT) break;
    path_.clear();
  }
  return lastError();
}

std::optional<Error> DownloadDirectory::make() {
  std::error_code error;
  const fs::path parent = fs::temp_directory_path(error);
  if (error) return Error{error.message()};
  std::string directory = (parent / kNamePrefix).native() + "XXXXXX";
  if (mkdtemp(directory.data()) == nullptr) return lastError();
  held_.reset();
  // Whoever cleans up in just this moment may have it before the lock does; then the next attempt makes
  // another.
  if (auto held = lock(directory)) held_.emplace(*std::move(held));
  path_ = std::move(directory);
  return std::nullopt;
}

bool DownloadDirectory::contains(const fs::path& file) const {
  const std::lock_guard lock(mutex_);
  return !path_.empty() && file.native().starts_with(path_ + "/") &&
         file.lexically_normal().native().starts_with(path_ + "/");
}

void DownloadDirectory::removeAll() {
  const std::lock_guard lock(mutex_);
  std::error_code ignored;
  if (!path_.empty()) fs::remove_all(path_, ignored);
}

}  // namespace QXPlatform
