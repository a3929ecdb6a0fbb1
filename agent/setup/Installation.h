#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/foundation/Result.h"

namespace QXAgent {

// What the agent knows of an app: written at its installation, read at every start.
struct Installation {
  std::string app;  // application id, such as com.example.Shop
  std::filesystem::path serviceExtension;
  std::optional<std::filesystem::path> contentExtension;
  std::optional<std::filesystem::path> bundle;  // else the extensions' own directories
  std::string name;
  std::string icon;
  std::optional<std::string> distributor;
  std::vector<std::filesystem::path> files;  // what the installation wrote, this one included

  // The bus name that the agent owns for the app.
  std::string busName() const { return app + ".Push"; }

  // Fails, saying where, when the app is not installed or what was written is damaged.
  static QXPlatform::Result<Installation> read(const std::string& app);
};

// Whether the text can be an application id, and the agent's bus name be made of it.
bool isApplicationId(const std::string& text);

// Writes the D-Bus service file, the user unit, which starts with the user's session, a desktop entry when
// the app has none, and what read() reads; fills in `files`. Fails at the first file that cannot be written,
// and then leaves none.
QXPlatform::Result<Installation> install(Installation installation, const std::filesystem::path& agent);
// Removes what install() wrote. Returns what was removed.
std::vector<std::filesystem::path> removeFiles(const Installation& installation);

}  // namespace QXAgent
