#include "tools/qx/HostContainer.h"

#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"
#include "QXPlatform/files/Container.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

namespace fs = std::filesystem;

// The rights are those of the making, so that nobody else gets in before a later change. That only gives back
// what the creation mask has taken from the owner.
std::error_code makeDirectory(const fs::path& path) {
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  if (error) return error;
  if (::mkdir(path.c_str(), S_IRWXU) == 0 && ::chmod(path.c_str(), S_IRWXU) == 0) return {};
  error.assign(errno, std::generic_category());
  std::error_code ignored;
  return fs::is_directory(path, ignored) ? std::error_code() : error;
}

}  // namespace

QXPlatform::Error noContainersRoot() {
  return {"HOME is not set, so there is no place for containers: set it, or name one by --groups-root"};
}

void warnOfNoContainersRoot(std::string_view command) {
  if (!QXPlatform::containersRoot()) fail(command, noContainersRoot().message);
}

QXPlatform::Result<fs::path> makeContainer() {
  const auto group = AppGroupSDK::AppGroupDirectoryProvider::groupIdentifier();
  if (!group) return QXPlatform::Error{"the bundle names no app group under VT_QUORIX_APP_GROUP_KEY"};
  if (!QXPlatform::containersRoot()) return noContainersRoot();
  const auto path = QXPlatform::containerPathForGroup(*group);
  if (!path) return QXPlatform::Error{"no container can be named after the app group " + *group};
  if (const auto error = makeDirectory(*path)) {
    return QXPlatform::Error{path->string() + " cannot be made: " + error.message()};
  }
  return *path;
}

}  // namespace qx
