#include "tests/support/FileCalls.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

namespace {

std::atomic<std::size_t> flushCount = 0;
std::atomic<std::size_t> readCount = 0;

}  // namespace

// In place of the C library's, which a sanitizer has its own of.
#ifndef QX_SANITIZED
extern "C" int fsync(int file) {
  ++flushCount;
  return static_cast<int>(::syscall(SYS_fsync, file));
}
extern "C" ssize_t read(int file, void* bytes, std::size_t size) {
  ++readCount;
  return ::syscall(SYS_read, file, bytes, size);
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

std::size_t FileCalls::totalReads() {
  return readCount;
}

}  // namespace support
