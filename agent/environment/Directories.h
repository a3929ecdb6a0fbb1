#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace QXAgent {

// The user's directories, as the environment names them. Throws std::runtime_error when there is no $HOME
// where one is needed.
std::filesystem::path dataHome();
std::filesystem::path configHome();
std::filesystem::path stateHome();
// The user's own first, then the system's.
std::vector<std::filesystem::path> dataDirectories();

// Where the agent keeps what must outlive it, of one app.
std::filesystem::path stateDirectory(const std::string& app);

}  // namespace QXAgent
