#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace QXAgent {

// What a desktop entry says of how its app is started.
struct DesktopEntry {
  bool isBusActivatable = false;
  std::vector<std::string> actions;  // under `Actions`
  std::vector<std::string> command;  // `Exec`, without its field codes; empty when there is none

  // The app's entry, as the user's directories come first.
  static std::optional<DesktopEntry> find(const std::string& app);
  static DesktopEntry parse(const std::string& text);
};

}  // namespace QXAgent
