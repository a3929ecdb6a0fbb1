#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <string_view>

// What a store does at the least: the system calls alone, for the floors that it is measured by. With the
// locks, since readers and writers in other processes share the directory; without a flush of the directory,
// since after a power failure the old record will do.
namespace bench {

// The directory's lock, and the directory open, while it lives.
class BareLock {
 public:
  BareLock(const std::string& directory, int operation)
      : directory_(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    ::flock(directory_, operation);
  }
  ~BareLock() { ::close(directory_); }
  BareLock(const BareLock&) = delete;
  BareLock& operator=(const BareLock&) = delete;

 private:
  const int directory_;
};

// Writes a staging file that keeps other writers out, syncs it and renames it over `target`; whether all went
// well.
inline bool bareSave(const std::string& directory, const std::string& target, std::string_view bytes) {
  const std::string staging = directory + "/floor-staging";
  const int file = ::open(staging.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  bool saved = ::flock(file, LOCK_EX | LOCK_NB) == 0 &&
               ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
               ::fsync(file) == 0;
  {
    const BareLock lock(directory, LOCK_EX);
    saved = saved && ::rename(staging.c_str(), target.c_str()) == 0;
  }
  ::close(file);
  return saved;
}

// Empty when the file cannot be read.
inline std::string bareRead(const std::string& directory, const std::string& path) {
  const BareLock lock(directory, LOCK_SH);
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status {};
  ::fstat(file, &status);
  std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
  if (::read(file, bytes.data(), bytes.size()) != status.st_size) bytes.clear();
  ::close(file);
  return bytes;
}

}  // namespace bench
