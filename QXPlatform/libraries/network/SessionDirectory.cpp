#include "QXPlatform/libraries/network/SessionDirectory.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "QXPlatform/libraries/network/DownloadDirectory.h"

namespace QXPlatform {

SessionDirectory::SessionDirectory() {
  DownloadDirectory::shared();
}

SessionDirectory::~SessionDirectory() {
  if (!path_.empty()) rmdir(path_.c_str());
}

int SessionDirectory::createFile(std::string& path) {
  const std::lock_guard lock(mutex_);
  if (path_.empty()) path_ = DownloadDirectory::shared().makeSubdirectory();
  if (path_.empty()) return -1;
  std::string file = path_ + "/download-XXXXXX";
  int descriptor = mkostemp(file.data(), O_CLOEXEC);
  // The owner of an earlier file may have removed the directory with it.
  if (descriptor < 0 && errno == ENOENT && mkdir(path_.c_str(), 0700) == 0) {
    file = path_ + "/download-XXXXXX";
    descriptor = mkostemp(file.data(), O_CLOEXEC);
  }
  if (descriptor >= 0) path = std::move(file);
  return descriptor;
}

}  // namespace QXPlatform
