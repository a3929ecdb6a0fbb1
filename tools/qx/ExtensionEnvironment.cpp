#include "tools/qx/ExtensionEnvironment.h"

#include <cstdlib>
#include <string>

namespace qx {

void setEnvironmentOf(const std::filesystem::path& program, const SimulatorOptions& simulator) {
  const std::filesystem::path directory = std::filesystem::absolute(program).parent_path();
  if (!simulator.bundle && std::filesystem::exists(directory / "Info.plist")) {
    setenv("QX_BUNDLE", directory.c_str(), 1);
  }
  setenv("QX_LOG_LEVEL", std::string(QXPlatform::rawValue(simulator.logLevel)).c_str(), 1);
  setenv("QX_LOG_FORMAT", std::string(QXPlatform::rawValue(simulator.logFormat)).c_str(), 1);
}

}  // namespace qx
