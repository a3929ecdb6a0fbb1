#pragma once

#include <mutex>
#include <string>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/foundation/Result.h"

namespace QXPlatform {

// One session's place in the directory of downloads, of mode 0700, made with its first file and removed, when
// it is empty, with the object. Any thread.
class SessionDirectory {
 public:
  SessionDirectory();
  ~SessionDirectory();
  SessionDirectory(const SessionDirectory&) = delete;
  SessionDirectory& operator=(const SessionDirectory&) = delete;

  struct File {
    std::string path;
    FileDescriptor descriptor;  // to write to
  };

  // A new file, of mode 0600.
  Result<File> createFile();

 private:
  std::mutex mutex_;
  std::string path_;  // guarded by mutex_; empty until it is made
};

}  // namespace QXPlatform
