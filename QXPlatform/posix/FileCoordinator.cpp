#include "QXPlatform/files/FileCoordinator.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/posix/FilePath.h"

// The directory itself is what is locked: a lock file would stay behind in it, and a lock on the record would
// be lost with each replacing. The lock belongs to the open file description, and every access opens its own,
// so threads exclude each other as processes do; the system drops it with the process that held it.

namespace QXPlatform {

namespace {

// One name serves a whole directory, since writers in it exclude each other. What bears it when a writer
// or reader has the lock was left by one that was killed, or has no business there: it goes.
constexpr const char* kStagingName = ".coordinated-write";

struct Target {
  std::string directory;
  std::string name;
};

std::optional<Target> makeTarget(const URL& url) {
  const auto path = filePath(url);
  if (!path) return std::nullopt;
  const std::size_t slash = path->rfind('/');
  if (slash == std::string::npos) return std::nullopt;
  Target target{path->substr(0, slash + 1), path->substr(slash + 1)};
  if (target.name.empty() || target.name == "." || target.name == "..") return std::nullopt;
  return target;
}

FileDescriptor openDirectory(const std::string& path) {
  return FileDescriptor(
      retryScarce([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

// Holds the lock of a directory.
class DirectoryLock {
 public:
  DirectoryLock(const FileDescriptor& directory, int operation)
      : directory_(directory),
        held_(retryScarce([&] { return ::flock(directory_.get(), operation); }) == 0) {}
  // Unlocks in so many words: closing would not do while a forked child has a copy of the descriptor.
  ~DirectoryLock() {
    if (held_) ::flock(directory_.get(), LOCK_UN);
  }
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

  bool held() const { return held_; }

 private:
  const FileDescriptor& directory_;
  const bool held_;
};

bool isSymbolicLink(const FileDescriptor& directory, const std::string& name) {
  struct stat status {};
  return ::fstatat(directory.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISLNK(status.st_mode);
}

// The file that is about to take the target's place. REQUIRES: the directory's lock, for this object's life.
class StagingFile {
 public:
  StagingFile(const FileDescriptor& directory, std::string path)
      : directory_(directory), path_(std::move(path)) {
    remove();
    const FileDescriptor file = open(O_CREAT | O_EXCL);
    // The creation mask may have taken bits away.
    made_ = file.valid() && ::fchmod(file.get(), 0600) == 0;
  }
  ~StagingFile() {
    if (!moved_) remove();
  }
  StagingFile(const StagingFile&) = delete;
  StagingFile& operator=(const StagingFile&) = delete;

  bool made() const { return made_; }
  const std::string& path() const { return path_; }

  bool replace(const std::string& name) {
    // Its bytes must be on the disk before its name is, else a power failure could leave an empty record.
    if (!synced() || ::renameat(directory_.get(), kStagingName, directory_.get(), name.c_str()) != 0) {
      return false;
    }
    moved_ = true;
    return retryInterrupted([&] { return ::fsync(directory_.get()); }) == 0;
  }

 private:
  FileDescriptor open(int flags) const {
    constexpr int kFlags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    return FileDescriptor(
        retryScarce([&] { return ::openat(directory_.get(), kStagingName, flags | kFlags, 0600); }));
  }
  // Opened again by name, since the accessor may have put another file there.
  bool synced() const {
    const FileDescriptor file = open(0);
    return file.valid() && retryInterrupted([&] { return ::fsync(file.get()); }) == 0;
  }
  void remove() const {
    if (::unlinkat(directory_.get(), kStagingName, 0) == 0 || errno != EISDIR) return;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const FileDescriptor& directory_;
  const std::string path_;
  bool made_ = false;
  bool moved_ = false;
};

}  // namespace

FileCoordinator::Outcome FileCoordinator::coordinateWritingForReplacing(
    const URL& target, const WritingAccessor& accessor) const {
  const auto file = makeTarget(target);
  if (!file) return Outcome::failed;
  const FileDescriptor directory = openDirectory(file->directory);
  if (!directory.valid()) return Outcome::failed;
  const DirectoryLock lock(directory, LOCK_EX);
  if (!lock.held()) return Outcome::calledOff;

  if (isSymbolicLink(directory, file->name)) return Outcome::failed;
  StagingFile staging(directory, file->directory + kStagingName);
  if (!staging.made()) return Outcome::failed;
  if (!accessor(URL::file(staging.path()))) return Outcome::failed;
  return staging.replace(file->name) ? Outcome::replaced : Outcome::failed;
}

void FileCoordinator::coordinateReading(const URL& target, const ReadingAccessor& accessor) const {
  const auto file = makeTarget(target);
  if (!file) return;
  const FileDescriptor directory = openDirectory(file->directory);
  if (!directory.valid()) return;
  const DirectoryLock lock(directory, LOCK_SH);
  if (!lock.held()) return;
  // Nobody is writing: a staging file is what a killed writer has left.
  ::unlinkat(directory.get(), kStagingName, 0);
  if (!isSymbolicLink(directory, file->name)) accessor(target);
}

}  // namespace QXPlatform
