#pragma once

#include <filesystem>
#include <mutex>
#include <string>

namespace QXPlatform {

// A directory of mode 0700 under the system's temporary directory, made with its first file and removed,
// when it is empty, with the object. Any thread.
class SessionDirectory {
 public:
  SessionDirectory() = default;
  ~SessionDirectory();
  SessionDirectory(const SessionDirectory&) = delete;
  SessionDirectory& operator=(const SessionDirectory&) = delete;

  // The descriptor of a new file of mode 0600, whose path is put into `path`; -1, with errno, on failure.
  int createFile(std::string& path);

  // Removes a file that lies in any such directory of this process, also one whose object is gone, and the
  // directory when it is then empty. Other files are left alone.
  static void discard(const std::filesystem::path& file);

 private:
  std::mutex mutex_;
  std::string path_;  // guarded by mutex_; empty until it is made
};

}  // namespace QXPlatform
