#include "tools/qx/SimulatorOptions.h"

#include <cstdlib>

namespace qx {

namespace {

// Beside the program's bin directory, in the build tree as well as installed.
std::filesystem::path installedBundle() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() /
         "share/qx/Simulator.bundle";
}

void setEnvironment(const char* name, const std::filesystem::path& value) {
  setenv(name, std::filesystem::absolute(value).c_str(), 1);
}

}  // namespace

std::optional<std::filesystem::path> bundleFromEnvironment() {
  const char* bundle = std::getenv("QX_BUNDLE");
  return bundle != nullptr ? std::optional<std::filesystem::path>(bundle) : std::nullopt;
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
