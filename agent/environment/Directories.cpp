#include "agent/environment/Directories.h"

#include <cstdlib>
#include <sstream>
#include <stdexcept>

namespace QXAgent {

namespace {

// The variable's value when it is an absolute path; others are to be ignored.
std::filesystem::path fromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && value[0] == '/' ? value : "";
}

std::filesystem::path homeOr(const char* name, const char* belowHome) {
  auto directory = fromEnvironment(name);
  if (!directory.empty()) return directory;
  const auto home = fromEnvironment("HOME");
  if (home.empty()) throw std::runtime_error(std::string("neither $") + name + " nor $HOME says where to go");
  return home / belowHome;
}

}  // namespace

std::filesystem::path dataHome() {
  return homeOr("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path configHome() {
  return homeOr("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path stateHome() {
  return homeOr("XDG_STATE_HOME", ".local/state");
}

std::vector<std::filesystem::path> dataDirectories() {
  std::vector<std::filesystem::path> directories{dataHome()};
  const char* list = std::getenv("XDG_DATA_DIRS");
  std::istringstream paths(list != nullptr && *list != '\0' ? list : "/usr/local/share:/usr/share");
  for (std::string path; std::getline(paths, path, ':');) {
    if (path.starts_with('/')) directories.emplace_back(path);
  }
  return directories;
}

std::filesystem::path stateDirectory(const std::string& app) {
  return stateHome() / "qx-agent" / app;
}

}  // namespace QXAgent
