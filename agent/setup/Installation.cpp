#include "agent/setup/Installation.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "QXPlatform/foundation/JSON.h"
#include "agent/activation/DesktopEntry.h"
#include "agent/environment/Directories.h"

namespace QXAgent {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;
using QXPlatform::Value;

std::filesystem::path installationFile(const std::string& app) {
  return configHome() / "qx-agent" / (app + ".json");
}

std::optional<std::string> textAt(const Dictionary& dictionary, std::string_view key) {
  const auto text = dictionary[key].string();
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

std::string toJSON(const Installation& installation) {
  std::vector<std::pair<std::string, Value>> members{
      {"app", installation.app},
      {"serviceExtension", installation.serviceExtension.native()},
      {"name", installation.name},
      {"icon", installation.icon}};
  if (installation.contentExtension)
    members.emplace_back("contentExtension", installation.contentExtension->native());
  if (installation.bundle) members.emplace_back("bundle", installation.bundle->native());
  if (installation.distributor) members.emplace_back("distributor", *installation.distributor);
  std::vector<Value> files;
  files.reserve(installation.files.size());
  for (const auto& file : installation.files) files.emplace_back(file.native());
  members.emplace_back("files", files);
  return QXPlatform::writeJSON(Dictionary::fromEntries(members), QXPlatform::JSONStyle::pretty).value() +
         "\n";
}

// Between double quotes, as service and unit files understand them.
std::string quoted(const std::string& text, std::string_view doubled) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    if (doubled.find(c) != std::string_view::npos) result += c;
    result += c;
  }
  return result + '"';
}

std::string serviceFile(const Installation& installation, const std::filesystem::path& agent) {
  return "[D-BUS Service]\nName=" + installation.busName() + "\nExec=" + quoted(agent, "") + " run --app " +
         installation.app + "\nSystemdService=" + installation.busName() + ".service\n";
}

std::string unitFile(const Installation& installation, const std::filesystem::path& agent) {
  // It comes back by itself after a crash, and with the user's session, since pushes may wait for it. An app
  // or a window that was opened stays when it goes.
  return "[Unit]\nDescription=Push notifications for " + installation.app +
         "\nStartLimitIntervalSec=60\nStartLimitBurst=20\n\n[Service]\nType=dbus\nBusName=" +
         installation.busName() + "\nExecStart=" + quoted(agent, "%$") + " run --app " + installation.app +
         "\nRestart=on-failure\nRestartSec=1\nKillMode=process\n\n[Install]\nWantedBy=default.target\n";
}

// A value of a desktop entry is one line, in which a backslash begins an escape.
std::string entryValue(const std::string& text) {
  std::string value;
  for (const char c : text) {
    if (c == '\\') value += '\\';
    value += c == '\n' || c == '\r' ? ' ' : c;
  }
  return value;
}

std::string desktopEntry(const Installation& installation) {
  return "[Desktop Entry]\nType=Application\nName=" + entryValue(installation.name) +
         (installation.icon.empty() ? "" : "\nIcon=" + entryValue(installation.icon)) +
         "\nDBusActivatable=true\nNoDisplay=true\n";
}

std::optional<Error> writeFile(const std::filesystem::path& file, const std::string& text) {
  std::error_code error;
  std::filesystem::create_directories(file.parent_path(), error);
  if (error) return Error{file.parent_path().string() + ": " + error.message()};
  std::ofstream stream(file, std::ios::trunc);
  stream << text;
  stream.close();
  if (!stream) return Error{file.string() + ": " + std::strerror(errno)};
  return std::nullopt;
}

// Has the unit started with the user's session, as `systemctl --user enable` does.
std::optional<Error> enable(const std::filesystem::path& unit, const std::filesystem::path& link) {
  std::error_code error;
  std::filesystem::create_directories(link.parent_path(), error);
  std::filesystem::remove(link, error);
  std::filesystem::create_symlink(unit, link, error);
  if (error) return Error{link.string() + ": " + error.message()};
  return std::nullopt;
}

Result<Installation> parse(const std::string& app, const std::string& text) {
  const auto value = QXPlatform::parseJSON(text);
  if (!value) return value.error();
  const auto members = value->dictionary();
  const auto serviceExtension = members ? textAt(*members, "serviceExtension") : std::nullopt;
  if (!serviceExtension) return Error{"no \"serviceExtension\""};
  Installation installation;
  installation.app = app;
  installation.serviceExtension = *serviceExtension;
  installation.contentExtension = textAt(*members, "contentExtension");
  installation.bundle = textAt(*members, "bundle");
  installation.name = textAt(*members, "name").value_or(app);
  installation.icon = textAt(*members, "icon").value_or("");
  installation.distributor = textAt(*members, "distributor");
  for (const Value& file : (*members)["files"].elements()) {
    if (const auto path = file.string()) installation.files.emplace_back(*path);
  }
  return installation;
}

}  // namespace

bool isApplicationId(const std::string& text) {
  return sd_bus_service_name_is_valid((text + ".Push").c_str()) > 0 && text.find('.') != std::string::npos &&
         text.front() != ':';
}

Result<Installation> Installation::read(const std::string& app) {
  const auto file = installationFile(app);
  std::ifstream stream(file);
  if (!stream)
    return Error{app + " is not installed: there is no " + file.string() + "; qx-agent install makes it"};
  std::ostringstream text;
  text << stream.rdbuf();
  auto installation = parse(app, text.str());
  if (!installation) return Error{file.string() + ": " + installation.error().message};
  return installation;
}

Result<Installation> install(Installation installation, const std::filesystem::path& agent) {
  const std::string unitName = installation.busName() + ".service";
  const auto units = configHome() / "systemd/user";
  std::vector<std::pair<std::filesystem::path, std::string>> files{
      {dataHome() / "dbus-1/services" / unitName, serviceFile(installation, agent)},
      {units / unitName, unitFile(installation, agent)}};
  const auto entry = dataHome() / "applications" / (installation.app + ".desktop");
  const auto before = Installation::read(installation.app);
  const bool isOwnEntry = before && std::ranges::find(before->files, entry) != before->files.end();
  if (isOwnEntry || !DesktopEntry::find(installation.app))
    files.emplace_back(entry, desktopEntry(installation));
  for (const auto& [file, text] : files) installation.files.push_back(file);
  const auto link = units / "default.target.wants" / unitName;
  installation.files.push_back(link);
  installation.files.push_back(installationFile(installation.app));
  files.emplace_back(installation.files.back(), toJSON(installation));
  std::optional<Error> error;
  for (const auto& [file, text] : files) {
    if (!error) error = writeFile(file, text);
  }
  if (!error) error = enable(units / unitName, link);
  if (!error) return installation;
  removeFiles(installation);
  return *error;
}

std::vector<std::filesystem::path> removeFiles(const Installation& installation) {
  std::vector<std::filesystem::path> removed;
  std::error_code ignored;
  for (const auto& file : installation.files) {
    if (std::filesystem::remove(file, ignored)) removed.push_back(file);
  }
  return removed;
}

}  // namespace QXAgent
