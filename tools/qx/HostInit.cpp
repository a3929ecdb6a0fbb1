#include <filesystem>
#include <system_error>

#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"
#include "platform/files/Container.h"
#include "tools/qx/HostCommands.h"
#include "tools/qx/HostRecords.h"

namespace qx {

namespace {

// True when the directory is there, with mode 0700 if this made it.
bool makeContainer(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::create_directories(path.parent_path(), error);
  const bool made = std::filesystem::create_directory(path, error);
  if (made) std::filesystem::permissions(path, std::filesystem::perms::owner_all, error);
  return !error && std::filesystem::is_directory(path, error);
}

}  // namespace

int runHostInit(const SimulatorOptions& simulator) {
  const auto group = AppGroupSDK::AppGroupDirectoryProvider::groupIdentifier();
  if (!group) return fail("host init", "the bundle names no app group under VT_QUORIX_APP_GROUP_KEY");
  const auto path = platform::containerPathForGroup(*group);
  if (!path) return fail("host init", "no container can be named after the app group " + *group);
  if (!makeContainer(*path)) return fail("host init", path->string() + " cannot be made");
  return reportSave(simulator, "host init", DataStoreStatus::success, path->string());
}

}  // namespace qx
