#include "tools/qx/SimulatorOptions.h"

#include <cstdlib>
#include <system_error>

#include "QXPlatform/foundation/Executable.h"

namespace qx {

namespace {

// Beside the program's bin directory, in the build tree as well as installed.
std::filesystem::path installedBundle() {
  return QXPlatform::executablePath().parent_path().parent_path() / "share/qx/Simulator.bundle";
}

void setEnvironment(const char* name, const std::filesystem::path& value) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(value, error);
  setenv(name, error ? value.c_str() : absolute.c_str(), 1);
}

}  // namespace

std::optional<std::filesystem::path> bundleFromEnvironment() {
  const char* bundle = std::getenv("QX_BUNDLE");
  if (bundle == nullptr || *bundle == '\0') return std::nullopt;
  return bundle;
}

void applyEnvironment(const SimulatorOptions& options) {
  if (options.groupsRoot) setEnvironment("QX_APP_GROUPS_ROOT", *options.groupsRoot);
  if (options.bundle) {
    setEnvironment("QX_BUNDLE", *options.bundle);
  } else {
    setEnvironment("QX_BUNDLE", installedBundle());
  }
}

}  // namespace qx
