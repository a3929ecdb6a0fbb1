#include "QXPlatform/files/FileCoordinator.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/files/LockHolder.h"
#include "QXPlatform/posix/DirectoryAccess.h"
#include "QXPlatform/posix/FilePath.h"
#include "QXPlatform/posix/FileStatus.h"
#include "QXPlatform/posix/OpenFile.h"

// Two locks, both of which the system drops with the process that held them, and which hold between threads
// as between processes, since they belong to an open file description and every access opens its own.
//
// Writers exclude each other by the staging file, which each makes and locks before it reads or writes
// anything. Readers and the replacing exclude each other by a lock on the directory itself: a lock file would
// stay behind in it, and a lock on the record would be lost with each replacing. So readers wait for a rename
// only, never for a disk.

namespace QXPlatform {

namespace {

// One name serves a whole directory. What bears it without being locked was left by a writer that was killed,
// or has no business there: it goes.
constexpr const char* kStagingName = ".coordinated-write";

struct Target {
  std::string directory;
  std::string name;
};

std::optional<Target> makeTarget(const URL& url) {
  auto path = filePath(url);
  if (!path) return std::nullopt;
  const std::size_t nameStart = path->rfind('/') + 1;
  std::string name = path->substr(nameStart);
  path->resize(nameStart);
  Target target{*std::move(path), std::move(name)};
  if (target.name.empty() || target.name == "." || target.name == "..") return std::nullopt;
  return target;
}

bool isStillNamed(const FileDescriptor& directory, const FileDescriptor& stagingFile) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(stagingFile.get(), &opened) == 0 &&
         ::fstatat(directory.get(), kStagingName, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

int openStagingFile(const FileDescriptor& directory, int flags) {
  return ::openat(directory.get(), kStagingName, flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
}

FileDescriptor findStagingFile(const FileDescriptor& directory) {
  return FileDescriptor(retryInterrupted([&] { return openStagingFile(directory, O_RDONLY); }));
}

// Holds the lock of a directory, if it is granted in time.
class DirectoryLock {
 public:
  static DirectoryLock forReading(const FileDescriptor& directory, DirectoryAccess& access) {
    access.holdBack(directory, LockKind::replacing);
    return {directory, access.wait(wanted(directory, LockKind::reading, LOCK_SH))};
  }
  static DirectoryLock forReplacing(const FileDescriptor& directory, DirectoryAccess& access) {
    return {directory, access.waitInLine(directory, wanted(directory, LockKind::replacing, LOCK_EX))};
  }
  // Unlocks in so many words: closing would not do while a forked child has a copy of the descriptor.
  ~DirectoryLock() {
    if (held_) ::flock(directory_.get(), LOCK_UN);
  }
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

  bool held() const { return held_; }

 private:
  DirectoryLock(const FileDescriptor& directory, LockAnswer answer)
      : directory_(directory), held_(answer == LockAnswer::granted) {}

  static DirectoryAccess::Wanted wanted(const FileDescriptor& directory, LockKind kind, int operation) {
    return {kind, [&directory, operation] { return tryLock(directory, operation); },
            [&directory] { return lockHolder(directory); }};
  }

  const FileDescriptor& directory_;
  const bool held_;
};

// A writer is done within seconds: what has not been touched for so long belongs to none that lives.
bool isAbandoned(const FileDescriptor& directory) {
  constexpr std::time_t kSeconds = 60;
  struct stat named {};
  return ::fstatat(directory.get(), kStagingName, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
         std::time(nullptr) - named.st_mtime > kSeconds;
}

// Removes what bears the staging file's name, unless it is the file of a writer that lives: then `busy`.
// Whether another user's writer lives can only be told by the file's age.
LockAnswer removeLeftover(const FileDescriptor& directory, const std::string& directoryPath) {
  const FileDescriptor found = findStagingFile(directory);
  if (!found.valid() && errno == ENOENT) return LockAnswer::granted;
  // Then nobody can tell.
  if (!found.valid() && isScarcity(errno)) return LockAnswer::busy;
  if (!found.valid() && errno == EACCES && !isAbandoned(directory)) return LockAnswer::busy;
  if (found.valid()) {
    if (tryLock(found, LOCK_EX) == LockAnswer::busy) return LockAnswer::busy;
    if (!isStillNamed(directory, found)) return LockAnswer::granted;
  }
  if (::unlinkat(directory.get(), kStagingName, 0) == 0) return LockAnswer::granted;
  std::error_code error;
  const bool removed =
      errno == EISDIR && std::filesystem::remove_all(directoryPath + kStagingName, error) > 0 && !error;
  return removed ? LockAnswer::granted : LockAnswer::refused;
}

// The file that is about to take the target's place. As long as it lives, there is no other writer.
class StagingFile {
 public:
  // `directoryPath` outlives it.
  StagingFile(const FileDescriptor& directory, const std::string& directoryPath, DirectoryAccess& access)
      : directory_(directory), directoryPath_(directoryPath) {
    access.holdBack(directory, LockKind::staging);
    const auto holder = [&] { return lockHolder(findStagingFile(directory_)); };
    answer_ = access.waitInLine(directory, {LockKind::staging, [&] { return make(); }, holder});
  }
  // The lock of one that has been moved means nothing to anybody.
  ~StagingFile() {
    if (!made_ || moved_) return;
    ::unlinkat(directory_.get(), kStagingName, 0);
    ::flock(file_->get(), LOCK_UN);
  }
  StagingFile(const StagingFile&) = delete;
  StagingFile& operator=(const StagingFile&) = delete;

  bool made() const { return made_; }
  // When it is not made: the system has no lock for it.
  bool lockRefused() const { return answer_ == LockAnswer::refused; }
  const FileDescriptor& descriptor() const { return *file_; }
  bool belongsToOwnerOf(const struct stat& other) const { return status_.st_uid == other.st_uid; }

  // Its bytes must be on the disk before its name is, else a power failure could leave an empty record. The
  // name may come later: until then the old record stays.
  bool sync() const {
    return retryInterrupted([&] { return ::fsync(file_->get()); }) == 0;
  }

  // Gives the version of what takes the place of `found`. REQUIRES: the directory's lock.
  std::optional<FileVersion> replace(const std::string& name, const FileVersion& found) {
    moved_ = isStillThere() && giveLaterTimeThan(found) &&
             ::renameat(directory_.get(), kStagingName, directory_.get(), name.c_str()) == 0;
    return moved_ ? std::optional(versionOf(status_)) : std::nullopt;
  }

 private:
  // `granted` also when there is nothing to wait for, since none can be made.
  LockAnswer make() {
    open();
    if (!file_->valid() && errno == EEXIST) {
      const auto removed = removeLeftover(directory_, directoryPath_);
      if (removed != LockAnswer::granted) return removed == LockAnswer::busy ? removed : LockAnswer::granted;
      open();
    }
    if (!file_->valid()) return errno == EEXIST ? LockAnswer::busy : LockAnswer::granted;
    const auto answer = tryLock(*file_, LOCK_EX);
    if (answer == LockAnswer::refused) ::unlinkat(directory_.get(), kStagingName, 0);
    if (answer != LockAnswer::granted) return answer;
    // Before it was locked, another may have taken it for left behind.
    if (!isStillThere()) return LockAnswer::busy;
    // The creation mask may have taken bits away.
    constexpr mode_t kPermissions = 0777;
    made_ = (status_.st_mode & kPermissions) == 0600 || ::fchmod(file_->get(), 0600) == 0;
    return answer;
  }
  // It has one name, and is moved by nobody else: who takes it for left behind removes it.
  bool isStillThere() { return ::fstat(file_->get(), &status_) == 0 && status_.st_nlink > 0; }
  // The system's own time of change is some milliseconds coarse: a second content within them may have got
  // the number and size of an earlier one. So each has a later time than the one before.
  bool giveLaterTimeThan(const FileVersion& found) {
    if (found != FileVersion() && versionOf(status_).modified > found.modified) return true;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const timespec times[] = {{0, UTIME_OMIT}, now};
    status_.st_mtim = now;
    return ::futimens(file_->get(), times) == 0;
  }
  void open() {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL;
    file_.emplace(retryScarce([&] { return openStagingFile(directory_, kFlags); }));
  }

  const FileDescriptor& directory_;
  const std::string& directoryPath_;
  std::optional<FileDescriptor> file_;
  struct stat status_ {};  // of file_, when it was last looked at
  LockAnswer answer_;
  bool made_ = false;
  bool moved_ = false;
};

// What stands in the place of a target; nothing when it may not be replaced. A symbolic link is not followed.
// What this user may not write, a rename would take away from its owner.
std::optional<FileVersion> replaceable(const FileDescriptor& directory, const std::string& name,
                                       const StagingFile& staging) {
  struct stat status {};
  if (::fstatat(directory.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return errno == ENOENT ? std::optional(FileVersion()) : std::nullopt;
  }
  if (S_ISLNK(status.st_mode)) return std::nullopt;
  const bool mayBeWritten = !S_ISREG(status.st_mode) ||
                            (staging.belongsToOwnerOf(status) && (status.st_mode & S_IWUSR) != 0) ||
                            ::faccessat(directory.get(), name.c_str(), W_OK, AT_EACCESS) == 0;
  return mayBeWritten ? std::optional(versionOf(status)) : std::nullopt;
}

}  // namespace

FileCoordinator::Outcome FileCoordinator::coordinateWritingForReplacing(const URL& target,
                                                                        const WritingAccessor& accessor,
                                                                        FileVersion* replaced) const {
  const auto file = makeTarget(target);
  if (!file) return Outcome::failed;
  DirectoryAccess access(file->directory, AccessKind::writing);
  if (!access.isAdmitted()) return Outcome::failed;
  const FileDescriptor directory = openFile(file->directory, O_RDONLY | O_DIRECTORY);
  if (!directory.valid()) return Outcome::failed;
  StagingFile staging(directory, file->directory, access);
  if (!staging.made()) return staging.lockRefused() ? Outcome::calledOff : Outcome::failed;
  const auto found = replaceable(directory, file->name, staging);
  if (!found || !accessor(staging.descriptor(), *found) || !staging.sync()) return Outcome::failed;
  access.renewPatience();
  const auto lock = DirectoryLock::forReplacing(directory, access);
  const auto version = lock.held() ? staging.replace(file->name, *found) : std::nullopt;
  if (version && replaced != nullptr) *replaced = *version;
  return version ? Outcome::replaced : Outcome::failed;
}

void FileCoordinator::coordinateReading(const URL& target, const ReadingAccessor& accessor) const {
  const auto file = makeTarget(target);
  if (!file) return;
  DirectoryAccess access(file->directory, AccessKind::reading);
  if (!access.isAdmitted()) return;
  const FileDescriptor directory = openFile(file->directory, O_RDONLY | O_DIRECTORY);
  if (!directory.valid()) return;
  const auto lock = DirectoryLock::forReading(directory, access);
  if (!lock.held()) return;
  if (access.isTimeForLeftovers()) removeLeftover(directory, file->directory);
  accessor(target);
}

}  // namespace QXPlatform
