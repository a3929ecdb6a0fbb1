#include "QXPlatform/posix/OpenFile.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>

#include "QXPlatform/log/Log.h"

namespace QXPlatform {

FileDescriptor openFile(const std::string& path, int flags) {
  constexpr mode_t kOwnersAlone = 0600;
  FileDescriptor file(retryScarce([&] { return ::open(path.c_str(), flags | O_CLOEXEC, kOwnersAlone); }));
  const int error = errno;
  if (!file.valid() && isScarcity(error)) {
    os_log({"QXPlatform", "Files", LogType::error,
            path + " cannot be opened: " + std::generic_category().message(error)});
    errno = error;
  }
  return file;
}

}  // namespace QXPlatform
