#include "agent/activation/AppActivation.h"

#include <sys/wait.h>

#include <algorithm>

#include "agent/extensions/Program.h"

namespace QXAgent {

namespace {

constexpr const char* kInterface = "org.freedesktop.Application";
constexpr const char* kAction = "notification";

std::string objectPath(const std::string& app) {
  std::string path = "/" + app;
  std::ranges::replace(path, '.', '/');
  std::ranges::replace(path, '-', '_');
  return path;
}

}  // namespace

void AppActivation::activate(const std::string& identifier, const std::string& token) const {
  const auto entry = DesktopEntry::find(app_).value_or(DesktopEntry());
  if (entry.isBusActivatable || bus_.ownerOf(app_) != "") return callApp(entry, identifier, token);
  if (entry.command.empty()) return failed_("there is nothing to start " + app_ + " by");
  startCommand(entry.command, token);
}

void AppActivation::callApp(const DesktopEntry& entry, const std::string& identifier,
                            const std::string& token) const {
  const bool listsAction = std::ranges::find(entry.actions, kAction) != entry.actions.end();
  auto call = bus_.newCall(app_.c_str(), objectPath(app_).c_str(), kInterface,
                           listsAction ? "ActivateAction" : "Activate");
  if (listsAction) sd_bus_message_append(call.get(), "sav", kAction, 1, "s", identifier.c_str());
  sd_bus_message_open_container(call.get(), 'a', "{sv}");
  if (!token.empty()) {
    for (const char* key : {"activation-token", "desktop-startup-id"})
      sd_bus_message_append(call.get(), "{sv}", key, "s", token.c_str());
  }
  sd_bus_message_close_container(call.get());
  bus_.send(std::move(call), [this, command = entry.command, token](sd_bus_message& reply) {
    const auto error = errorOf(reply);
    if (!error) return;
    failed_(app_ + " cannot be brought up over the bus: " + *error);
    if (!command.empty()) startCommand(command, token);
  });
}

void AppActivation::startCommand(const std::vector<std::string>& command, const std::string& token) const {
  ProgramStart start{command.front(), {command.begin() + 1, command.end()}, {}};
  if (!token.empty()) start.environment.push_back("XDG_ACTIVATION_TOKEN=" + token);
  const auto process = startDetached(start);
  if (!process) return failed_(process.error().message);
  loop_.reap(*process);
}

}  // namespace QXAgent
