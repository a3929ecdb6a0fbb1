#include "QXPlatform/libraries/network/SessionDirectory.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "QXPlatform/libraries/network/DownloadDirectory.h"

namespace QXPlatform {

SessionDirectory::SessionDirectory() {
  DownloadDirectory::shared();
}

SessionDirectory::~SessionDirectory() {
  if (!path_.empty()) rmdir(path_.c_str());
}

Result<SessionDirectory::File> SessionDirectory::createFile() {
  const std::lock_guard lock(mutex_);
  if (path_.empty()) {
    auto made = DownloadDirectory::shared().makeSubdirectory();
    if (!made) return made.error();
    path_ = *std::move(made);
  }
  const auto create = [this](std::string& file) {
    file = path_ + "/download-XXXXXX";
    return mkostemp(file.data(), O_CLOEXEC);
  };
  std::string file;
  int descriptor = create(file);
  // The owner of an earlier file may have removed the directory with it.
  if (descriptor < 0 && errno == ENOENT && mkdir(path_.c_str(), 0700) == 0) descriptor = create(file);
  if (descriptor < 0) return Error{std::generic_category().message(errno)};
  return File{std::move(file), FileDescriptor(descriptor)};
}

}  // namespace QXPlatform
