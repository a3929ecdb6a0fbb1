#include "QXPlatform/posix/OpenDirectory.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>

#include <atomic>

namespace QXPlatform {

namespace {

// Of this process and of those that it is forked from, since the first was asked for.
std::atomic<unsigned> forks = 0;

// Nothing when the system does not tell of them.
std::optional<unsigned> forksSoFar() {
  static const bool areCounted = ::pthread_atfork(nullptr, nullptr, [] { ++forks; }) == 0;
  return areCounted ? std::optional(forks.load()) : std::nullopt;
}

}  // namespace

OpenDirectory::OpenDirectory(const std::string& path)
    : descriptor_(retryScarce([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })),
      forks_(forksSoFar()) {}

bool OpenDirectory::isStillAt(const std::string& path) {
  if (!forks_ || forks_ != forksSoFar()) return false;
  struct stat status {};
  if (!identity_ && ::fstat(descriptor_.get(), &status) == 0) identity_ = {status.st_dev, status.st_ino};
  return ::stat(path.c_str(), &status) == 0 && identity_ == Identity{status.st_dev, status.st_ino};
}

}  // namespace QXPlatform
