#include "agent/Commands.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/UUID.h"
#include "agent/Agent.h"
#include "agent/environment/Directories.h"
#include "agent/spool/Recovery.h"
#include "agent/webpush/Base64URL.h"

namespace QXAgent {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::FileDescriptor;
using QXPlatform::Result;
using QXPlatform::Value;

// The distributor may take its time, and the agent gives up before this.
constexpr std::chrono::seconds kLongestRegistration{25};
constexpr std::chrono::milliseconds kLongestEnd{5'000};
constexpr std::chrono::milliseconds kLook{20};

int fail(const std::string& what) {
  std::cerr << "qx-agent: " << what << '\n';
  return 1;
}

int print(const Dictionary& result) {
  std::cout << QXPlatform::writeJSON(result, QXPlatform::JSONStyle::compact).value() << std::endl;
  return std::cout ? 0 : fail("the result cannot be written");
}

int printFiles(const std::vector<std::filesystem::path>& files) {
  std::vector<Value> list;
  list.reserve(files.size());
  for (const auto& file : files) list.emplace_back(file.native());
  return print({{"status", "success"}, {"files", list}});
}

// The app's state directory, which this process alone has until the descriptor is closed.
Result<FileDescriptor> lockState(const std::filesystem::path& directory) {
  std::error_code error;
  std::filesystem::create_directories(directory.parent_path(), error);
  if (mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST)
    return Error{directory.string() + ": " + std::strerror(errno)};
  FileDescriptor lock(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock.valid()) return Error{directory.string() + ": " + std::strerror(errno)};
  // An agent that ends gives its name away first.
  for (auto left = kLongestEnd; flock(lock.get(), LOCK_EX | LOCK_NB) != 0; left -= kLook) {
    if (left <= left.zero()) return Error{"another agent uses " + directory.string()};
    std::this_thread::sleep_for(kLook);
  }
  return lock;
}

// Gives what comes on standard input to the agent that runs. A line that it cannot take now, or that comes
// while the bus starts it again, is offered until it is taken.
int handOverLines(EventLoop& loop, const Bus& bus, const std::string& agent) {
  int exitCode = 0;
  // Of the line that is offered: it may have been taken although nobody said so in time.
  std::string key = QXPlatform::makeUUIDString();
  const auto take = [&](std::string_view line) {
    auto call = bus.newCall(agent.c_str(), kPushPath, kPushInterface, "DeliverOnce");
    sd_bus_message_append(call.get(), "s", key.c_str());
    sd_bus_message_append_array(call.get(), 'y', line.data(), line.size());
    std::string error;
    if (bus.ask(call, &error, kLongestRegistration) != nullptr) {
      key = QXPlatform::makeUUIDString();
      return true;
    }
    fail("the running agent does not take a line, which is offered again: " + error);
    return false;
  };
  const LineSource lines(loop, STDIN_FILENO,
                         {.take = take,
                          .refuse = [&](const std::string& reason) { exitCode = fail(reason); },
                          .failed = [&](const std::string& reason) { exitCode = fail(reason); },
                          .ended = [&] { loop.stop(exitCode); }});
  return loop.run();
}

// What is installed or gone counts at once; each of the two may be absent.
void reloadServices() {
  EventLoop loop;
  const auto bus = Bus::connect(loop);
  if (!bus) return;
  bus->ask(
      bus->newCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReloadConfig"));
  const auto call = bus->newCall("org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                 "org.freedesktop.systemd1.Manager", "Reload");
  sd_bus_message_set_auto_start(call.get(), 0);
  bus->ask(call, nullptr, kLongestRegistration);
}

int runOn(EventLoop& loop, const Bus& bus, const Installation& installation, const RunOptions& options) {
  const auto state = stateDirectory(options.app);
  const auto lock = lockState(state);
  if (!lock) return fail(lock.error().message);
  const auto [database, wasDamaged] = openOrBeginAnew(state / kDatabaseName);
  // What starting has left behind is not to stay for as long as the agent does.
  malloc_trim(0);
  Agent agent(
      loop, bus, database,
      {installation, state, std::chrono::seconds(options.idleSeconds), options.readsLines, wasDamaged});
  agent.start();
  return loop.run();
}

// Whether there was an agent to end.
bool endAgent(const Bus& bus, const std::string& name) {
  const auto process = bus.processOf(name);
  if (!process) return false;
  kill(*process, SIGTERM);
  for (auto left = kLongestEnd; left > left.zero() && bus.processOf(name) == process; left -= kLook)
    std::this_thread::sleep_for(kLook);
  return true;
}

// Ends the registration, so that whoever sends is told by the distributor that nobody listens any more, and
// the agent, should it run.
void endForGood(const Installation& installation) {
  EventLoop loop;
  const auto bus = Bus::connect(loop);
  if (!bus) return;
  const std::string name = installation.busName();
  if (std::filesystem::exists(stateDirectory(installation.app) / kDatabaseName))
    bus->ask(bus->newCall(name.c_str(), kPushPath, kPushInterface, "Unregister"), nullptr,
             kLongestRegistration);
  endAgent(*bus, name);
}

// An agent that runs knows the installation that it began with.
void renewAgent(const std::string& name) {
  EventLoop loop;
  const auto bus = Bus::connect(loop);
  if (!bus || !endAgent(*bus, name)) return;
  const auto call = bus->newCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                 "StartServiceByName");
  sd_bus_message_append(call.get(), "su", name.c_str(), 0);
  bus->ask(call, nullptr, kLongestRegistration);
}

std::optional<Registration> loadRegistration(const std::string& app) {
  const auto file = stateDirectory(app) / kDatabaseName;
  if (!std::filesystem::exists(file)) return std::nullopt;
  try {
    const Database database(file);
    return RegistrationStore(database).load().current;
  } catch (const DatabaseError& error) {
    // The agent begins it anew, and registers.
    if (error.isDamage) return std::nullopt;
    throw;
  }
}

bool isUsable(const Registration& registration, const Installation& installation) {
  return !registration.endpoint.empty() &&
         installation.distributor.value_or(registration.distributor) == registration.distributor;
}

// Returns why there is no endpoint now.
std::optional<std::string> askToRegister(const Installation& installation) {
  EventLoop loop;
  const auto bus = Bus::connect(loop);
  if (!bus) return bus.error().message;
  std::string error;
  const auto call = bus->newCall(installation.busName().c_str(), kPushPath, kPushInterface, "Register");
  if (bus->ask(call, &error, kLongestRegistration) == nullptr) return error;
  return std::nullopt;
}

}  // namespace

int runAgent(const RunOptions& options) {
  const auto installation = Installation::read(options.app);
  if (!installation) return fail(installation.error().message);
  EventLoop loop;
  const auto bus = Bus::connect(loop);
  if (!bus) return fail(bus.error().message);
  try {
    // Calls wait until the loop runs, when all who answer them are there.
    if (bus->requestName(installation->busName())) return runOn(loop, *bus, *installation, options);
  } catch (const DatabaseError& error) {
    return fail(stateDirectory(options.app).string() + ": " + error.message);
  }
  return options.readsLines ? handOverLines(loop, *bus, installation->busName())
                            : fail("an agent of " + options.app + " runs already");
}

int runInstall(Installation installation) {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return fail("where this program lies cannot be told: " + error.message());
  installation.serviceExtension = std::filesystem::absolute(installation.serviceExtension);
  for (auto* path : {&installation.contentExtension, &installation.bundle}) {
    if (*path) *path = std::filesystem::absolute(**path);
  }
  if (installation.name.empty()) installation.name = installation.app;
  const auto done = install(std::move(installation), self);
  if (!done) return fail(done.error().message);
  reloadServices();
  renewAgent(done->busName());
  return printFiles(done->files);
}

int runUninstall(const std::string& app) {
  const auto installation = Installation::read(app);
  if (!installation) return fail(installation.error().message);
  endForGood(*installation);
  const auto removed = removeFiles(*installation);
  std::error_code ignored;
  std::filesystem::remove_all(stateDirectory(app), ignored);
  reloadServices();
  return printFiles(removed);
}

int runEndpoint(const std::string& app) {
  const auto installation = Installation::read(app);
  if (!installation) return fail(installation.error().message);
  try {
    auto registration = loadRegistration(app);
    if (!registration || !isUsable(*registration, *installation)) {
      if (const auto error = askToRegister(*installation)) return fail(*error);
      registration = loadRegistration(app);
    }
    if (!registration || !isUsable(*registration, *installation))
      return fail("the distributor of this installation has given no endpoint");
    return print({{"endpoint", registration->endpoint},
                  {"publicKey", encodeBase64URL(registration->keys.publicKey.view())},
                  {"auth", encodeBase64URL(registration->keys.auth.view())}});
  } catch (const DatabaseError& problem) {
    return fail(stateDirectory(app).string() + ": " + problem.message);
  }
}

int runStatus(const std::string& app) {
  const auto installation = Installation::read(app);
  if (!installation) return fail(installation.error().message);
  Account account;
  const auto file = stateDirectory(app) / kDatabaseName;
  try {
    if (std::filesystem::exists(file)) {
      const Database database(file);
      account = Spool(database).account();
    }
  } catch (const DatabaseError& error) {
    return fail(file.string() + ": " + error.message);
  }
  const Dictionary counts{{"received", account.received},
                          {"shown", account.shown},
                          {"waiting", account.waiting},
                          {"refused", account.refused},
                          {"putAside", account.putAside}};
  return print(account.lastError ? counts.setting("lastError", *account.lastError) : counts);
}

}  // namespace QXAgent
