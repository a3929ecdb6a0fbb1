#include "agent/extensions/UnitProgram.h"

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <string_view>
#include <utility>

#include "QXPlatform/foundation/Handle.h"
#include "QXPlatform/foundation/UTF8.h"
#include "QXPlatform/foundation/UUID.h"

namespace QXAgent {

namespace {

using QXPlatform::Error;
using QXPlatform::Result;
using Connection = QXPlatform::Handle<sd_bus, sd_bus_flush_close_unref>;
using Message = QXPlatform::Handle<sd_bus_message, sd_bus_message_unref>;
using Slot = QXPlatform::Handle<sd_bus_slot, sd_bus_slot_unref>;

constexpr const char* kManager = "org.freedesktop.systemd1";
constexpr const char* kPath = "/org/freedesktop/systemd1";
constexpr const char* kInterface = "org.freedesktop.systemd1.Manager";
// All in all: nothing else happens meanwhile.
constexpr std::chrono::seconds kLongestStart{5};
using Deadline = std::chrono::steady_clock::time_point;

std::uint64_t timeLeft(Deadline deadline) {
  const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - std::chrono::steady_clock::now());
  // None at all would stand for the library's own limit.
  return static_cast<std::uint64_t>(std::max<std::int64_t>(left.count(), 1));
}

// A connection of its own, since the start is waited for and nothing else is to happen meanwhile.
Connection connect() {
  sd_bus* bus = nullptr;
  sd_bus_open_user(&bus);
  return Connection(bus);
}

Message newCall(const Connection& bus, const char* member) {
  sd_bus_message* call = nullptr;
  sd_bus_message_new_method_call(bus.get(), &call, kManager, kPath, kInterface, member);
  return Message(call);
}

Result<Message> ask(const Connection& bus, const Message& call, Deadline deadline) {
  sd_bus_message* reply = nullptr;
  sd_bus_error problem = SD_BUS_ERROR_NULL;
  const int status = sd_bus_call(bus.get(), call.get(), timeLeft(deadline), &problem, &reply);
  const std::string why = problem.message != nullptr ? problem.message : std::strerror(-status);
  sd_bus_error_free(&problem);
  if (status < 0) return Error{"the service manager failed: " + why};
  return Message(reply);
}

class UnitProgram final : public Program {
 public:
  explicit UnitProgram(std::string unit) : unit_(std::move(unit)) {}
  ~UnitProgram() override {
    if (!released_) kill();
  }
  UnitProgram(const UnitProgram&) = delete;
  UnitProgram& operator=(const UnitProgram&) = delete;

  int exitDescriptor() const override { return -1; }
  void kill() override {
    const Connection bus = connect();
    const Message call = newCall(bus, "KillUnit");
    sd_bus_message_append(call.get(), "ssi", unit_.c_str(), "all", SIGKILL);
    sd_bus_message_set_expect_reply(call.get(), 0);
    sd_bus_send(bus.get(), call.get(), nullptr);
  }
  void release() override { released_ = true; }
  std::optional<int> exitStatus() override { return std::nullopt; }
  int processId() const override { return 0; }

 private:
  const std::string unit_;
  bool released_ = false;
};

// What an extension may want to know of its surroundings; others could hold secrets, which a unit shows. The
// manager refuses the whole when one of them does not suit it.
bool isFitForUnit(std::string_view assignment) {
  constexpr std::array kPassedOn{"HOME=",     "LANG=", "LC_",         "PATH=",        "QX_",
                                 "SSL_CERT_", "XDG_",  "http_proxy=", "https_proxy=", "no_proxy="};
  return std::ranges::any_of(kPassedOn, [&](const char* name) { return assignment.starts_with(name); }) &&
         QXPlatform::isValidUTF8(assignment) &&
         std::ranges::none_of(assignment, [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

void appendStrings(sd_bus_message* call, const char* name, const std::vector<std::string>& texts) {
  sd_bus_message_open_container(call, 'r', "sv");
  sd_bus_message_append(call, "s", name);
  sd_bus_message_open_container(call, 'v', "as");
  sd_bus_message_open_container(call, 'a', "s");
  for (const std::string& text : texts) sd_bus_message_append(call, "s", text.c_str());
  for (int i = 0; i < 3; ++i) sd_bus_message_close_container(call);
}

void appendCommand(sd_bus_message* call, const ProgramStart& start) {
  sd_bus_message_open_container(call, 'r', "sv");
  sd_bus_message_append(call, "s", "ExecStart");
  sd_bus_message_open_container(call, 'v', "a(sasb)");
  sd_bus_message_open_container(call, 'a', "(sasb)");
  sd_bus_message_open_container(call, 'r', "sasb");
  sd_bus_message_append(call, "s", start.program.c_str());
  sd_bus_message_open_container(call, 'a', "s");
  sd_bus_message_append(call, "s", start.program.c_str());
  for (const std::string& argument : start.arguments) sd_bus_message_append(call, "s", argument.c_str());
  sd_bus_message_close_container(call);
  sd_bus_message_append(call, "b", 0);
  for (int i = 0; i < 4; ++i) sd_bus_message_close_container(call);
}

void appendEnvironment(sd_bus_message* call, const ProgramStart& start) {
  std::vector<std::string> assignments;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (isFitForUnit(*entry)) assignments.emplace_back(*entry);
  }
  assignments.insert(assignments.end(), start.environment.begin(), start.environment.end());
  appendStrings(call, "Environment", assignments);
}

void appendLimits(sd_bus_message* call, const UnitLimits& limits) {
  sd_bus_message_append(call, "(sv)(sv)", "MemoryMax", "t", limits.memory, "MemorySwapMax", "t",
                        std::uint64_t{0});
  for (const char* restriction : {"NoNewPrivileges", "PrivateUsers", "PrivateTmp"})
    sd_bus_message_append(call, "(sv)", restriction, "b", 1);
  sd_bus_message_append(call, "(sv)(sv)", "ProtectSystem", "s", "strict", "ProtectHome", "s", "read-only");
  std::vector<std::string> paths;
  paths.reserve(limits.writablePaths.size());
  // One that is not there is no error.
  for (const auto& path : limits.writablePaths) paths.push_back("-" + path.native());
  appendStrings(call, "ReadWritePaths", paths);
}

Message startCall(const Connection& bus, const std::string& unit, const ProgramStart& start,
                  const UnitLimits& limits, const ProgramPipes& pipes) {
  Message call = newCall(bus, "StartTransientUnit");
  sd_bus_message_append(call.get(), "ss", unit.c_str(), "fail");
  sd_bus_message_open_container(call.get(), 'a', "(sv)");
  sd_bus_message_append(call.get(), "(sv)(sv)(sv)", "Description", "s", limits.description.c_str(), "Type",
                        "s", "exec", "CollectMode", "s", "inactive-or-failed");
  appendCommand(call.get(), start);
  appendEnvironment(call.get(), start);
  appendLimits(call.get(), limits);
  sd_bus_message_append(call.get(), "(sv)(sv)(sv)", "StandardInputFileDescriptor", "h", pipes.itsInput.get(),
                        "StandardOutputFileDescriptor", "h", pipes.itsOutput.get(),
                        "StandardErrorFileDescriptor", "h", STDERR_FILENO);
  sd_bus_message_close_container(call.get());
  sd_bus_message_append(call.get(), "a(sa(sv))", 0);
  return call;
}

struct Start {
  const std::string& unit;
  std::string result;  // of its job, once that has ended
};

int noteRemovedJob(sd_bus_message* signal, void* data, sd_bus_error*) {
  auto* start = static_cast<Start*>(data);
  std::uint32_t id = 0;
  const char* job = nullptr;
  const char* unit = nullptr;
  const char* result = nullptr;
  if (sd_bus_message_read(signal, "uoss", &id, &job, &unit, &result) > 0 && start->unit == unit)
    start->result = result;
  return 0;
}

std::string awaitJob(const Connection& bus, const Start& start, Deadline deadline) {
  while (start.result.empty()) {
    if (std::chrono::steady_clock::now() >= deadline) return "it takes too long";
    const int processed = sd_bus_process(bus.get(), nullptr);
    if (processed < 0) return std::strerror(-processed);
    if (processed == 0) sd_bus_wait(bus.get(), timeLeft(deadline));
  }
  return start.result;
}

}  // namespace

bool hasUserManager() {
  const Connection bus = connect();
  return bus != nullptr && sd_bus_get_name_creds(bus.get(), kManager, 0, nullptr) >= 0;
}

Result<StartedProgram> startUnit(const ProgramStart& start, const UnitLimits& limits) {
  auto opened = ProgramPipes::open();
  if (!opened) return opened.error();
  ProgramPipes pipes = *std::move(opened);
  const Connection bus = connect();
  if (bus == nullptr) return Error{"there is no session bus"};
  const std::string unit = "qx-agent-" + QXPlatform::makeUUIDString() + ".service";
  const Deadline deadline = std::chrono::steady_clock::now() + kLongestStart;
  Start job{unit, {}};
  sd_bus_slot* slot = nullptr;
  sd_bus_match_signal(bus.get(), &slot, kManager, kPath, kInterface, "JobRemoved", noteRemovedJob, &job);
  const Slot match(slot);
  // Without it the manager does not say what becomes of jobs.
  if (const auto subscribed = ask(bus, newCall(bus, "Subscribe"), deadline); !subscribed)
    return subscribed.error();
  if (const auto begun = ask(bus, startCall(bus, unit, start, limits, pipes), deadline); !begun)
    return begun.error();
  if (const auto result = awaitJob(bus, job, deadline); result != "done")
    return Error{"the unit does not start: " + result};
  return StartedProgram{std::make_unique<UnitProgram>(unit), std::move(pipes.ourInput),
                        std::move(pipes.ourOutput)};
}

}  // namespace QXAgent
