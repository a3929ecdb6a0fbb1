#include "QXPlatform/files/LockedDirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "QXPlatform/foundation/Handle.h"

namespace QXPlatform {
namespace {

namespace fs = std::filesystem;

std::optional<FileDescriptor> lock(const fs::path& directory) {
  FileDescriptor opened(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!opened.valid() || flock(opened.get(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  return opened;
}

bool isOwn(const FileDescriptor& directory) {
  struct stat status {};
  return fstat(directory.get(), &status) == 0 && status.st_uid == geteuid();
}

bool isRemoved(const FileDescriptor& directory) {
  struct stat status {};
  return fstat(directory.get(), &status) == 0 && status.st_nlink == 0;
}

}  // namespace

LockedDirectory::LockedDirectory(fs::path path, std::optional<FileDescriptor> held)
    : path_(std::move(path)), held_(std::move(held)) {}

Result<LockedDirectory> LockedDirectory::make(std::string_view prefix) {
  std::error_code error;
  const std::string pattern = (fs::temp_directory_path(error) / prefix).native() + "XXXXXX";
  if (error) return Error{error.message()};
  // Whoever cleans up in just this moment may have it before the lock does. Where nothing can be locked, an
  // unlocked one will do.
  constexpr int kAttempts = 3;
  for (int attempt = 1;; ++attempt) {
    std::string path = pattern;
    if (mkdtemp(path.data()) == nullptr) return Error{std::generic_category().message(errno)};
    auto held = lock(path);
    if ((held && !isRemoved(*held)) || attempt == kAttempts)
      return LockedDirectory(std::move(path), std::move(held));
    ::rmdir(path.c_str());
  }
}

void removeUnlockedDirectories(std::string_view prefix, Leftovers leftovers) {
  std::error_code ignored;
  const fs::path parent = fs::temp_directory_path(ignored);
  // The library's iterator makes paths of all names, of which there may be thousands.
  const Handle<DIR, &::closedir> listing(::opendir(parent.c_str()));
  if (listing == nullptr) return;
  while (const dirent* const entry = ::readdir(listing.get())) {
    if (!std::string_view(entry->d_name).starts_with(prefix)) continue;
    const fs::path directory = parent / entry->d_name;
    const auto held = lock(directory);
    if (!held || !isOwn(*held)) continue;
    leftovers == Leftovers::all ? fs::remove_all(directory, ignored) : fs::remove(directory, ignored);
  }
}

}  // namespace QXPlatform
