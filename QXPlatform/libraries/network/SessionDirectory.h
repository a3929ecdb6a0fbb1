#pragma once

#include <mutex>
#include <string>

namespace QXPlatform {

// One session's place in the directory of downloads, of mode 0700, made with its first file and removed, when
// it is empty, with the object. Any thread.
class SessionDirectory {
 public:
  SessionDirectory();
  ~SessionDirectory();
  SessionDirectory(const SessionDirectory&) = delete;
  SessionDirectory& operator=(const SessionDirectory&) = delete;

  // The descriptor of a new file of mode 0600, whose path is put into `path`; -1, with errno, on failure.
  int createFile(std::string& path);

 private:
  std::mutex mutex_;
  std::string path_;  // guarded by mutex_; empty until it is made
};

}  // namespace QXPlatform
