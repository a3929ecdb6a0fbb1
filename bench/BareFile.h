#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <string_view>

// What a store does at the least: the system calls alone, for the floors that it is measured by.
namespace bench {

// Writes a staging file, syncs it, renames it over `target` and syncs the directory; whether all went well.
inline bool bareSave(const std::string& directory, const std::string& target, std::string_view bytes) {
  const std::string staging = directory + "/floor-staging";
  const int folder = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const int file = ::open(staging.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  const bool written = ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
                       ::fsync(file) == 0 && ::close(file) == 0;
  const bool renamed = written && ::rename(staging.c_str(), target.c_str()) == 0 && ::fsync(folder) == 0;
  ::close(folder);
  return renamed;
}

// Empty when the file cannot be read.
inline std::string bareRead(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status {};
  ::fstat(file, &status);
  std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
  if (::read(file, bytes.data(), bytes.size()) != status.st_size) bytes.clear();
  ::close(file);
  return bytes;
}

}  // namespace bench
