#include "agent/activation/DesktopEntry.h"

#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string_view>
#include <utility>

#include "agent/environment/Directories.h"

namespace QXAgent {

namespace {

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string unescaped(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] != '\\' || i + 1 == value.size()) {
      text += value[i];
      continue;
    }
    const char escaped = value[++i];
    text += escaped == 's'   ? ' '
            : escaped == 'n' ? '\n'
            : escaped == 't' ? '\t'
            : escaped == 'r' ? '\r'
                             : escaped;
  }
  return text;
}

std::map<std::string, std::string, std::less<>> mainGroup(const std::string& text) {
  std::map<std::string, std::string, std::less<>> group;
  std::istringstream lines(text);
  bool isInside = false;
  for (std::string line; std::getline(lines, line);) {
    const std::string_view content = trimmed(line);
    if (content.starts_with('[')) isInside = content == "[Desktop Entry]";
    const auto equals = content.find('=');
    if (!isInside || content.starts_with('#') || equals == std::string_view::npos) continue;
    // Escaped twice where it is a command: once as a value, once between quotes.
    group.emplace(trimmed(content.substr(0, equals)), unescaped(trimmed(content.substr(equals + 1))));
  }
  return group;
}

std::vector<std::string> commandWords(const std::string& exec) {
  std::vector<std::string> words;
  std::string word;
  bool isWord = false;
  bool isQuoted = false;
  for (std::size_t i = 0; i < exec.size(); ++i) {
    const char c = exec[i];
    if (c == '"') {
      isQuoted = !isQuoted;
      isWord = true;
    } else if (isQuoted && c == '\\' && i + 1 < exec.size()) {
      word += exec[++i];
    } else if (!isQuoted && (c == ' ' || c == '\t')) {
      if (isWord) words.push_back(std::exchange(word, {}));
      isWord = false;
    } else if (c == '%' && i + 1 < exec.size()) {
      // The app is opened without a file, so only the sign itself stays of the field codes.
      if (exec[++i] != '%') continue;
      word += '%';
      isWord = true;
    } else {
      word += c;
      isWord = true;
    }
  }
  if (isWord) words.push_back(word);
  return words;
}

}  // namespace

std::optional<DesktopEntry> DesktopEntry::find(const std::string& app) {
  for (const auto& directory : dataDirectories()) {
    std::ifstream file(directory / "applications" / (app + ".desktop"));
    if (!file) continue;
    std::ostringstream text;
    text << file.rdbuf();
    return parse(text.str());
  }
  return std::nullopt;
}

DesktopEntry DesktopEntry::parse(const std::string& text) {
  auto group = mainGroup(text);
  DesktopEntry entry;
  entry.isBusActivatable = group["DBusActivatable"] == "true";
  std::istringstream actions(group["Actions"]);
  for (std::string action; std::getline(actions, action, ';');) entry.actions.push_back(action);
  entry.command = commandWords(group["Exec"]);
  return entry;
}

}  // namespace QXAgent
