#include "tests/support/FileCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

namespace {

std::atomic<std::size_t> flushCount = 0;
std::atomic<std::size_t> lookCount = 0;

}  // namespace

// In place of the C library's, which a sanitizer has its own of.
#ifndef QX_SANITIZED
extern "C" int fsync(int file) {
  ++flushCount;
  return static_cast<int>(::syscall(SYS_fsync, file));
}
extern "C" int lstat(const char* path, struct stat* status) noexcept {
  ++lookCount;
  return ::fstatat(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}
#endif

namespace support {

bool FileCalls::areCounted() {
#ifdef QX_SANITIZED
  return false;
#else
  return true;
#endif
}

std::size_t FileCalls::totalFlushes() {
  return flushCount;
}

std::size_t FileCalls::totalLooks() {
  return lookCount;
}

}  // namespace support
