#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <utility>

#include "agent/extensions/Program.h"

namespace QXAgent {

namespace {

using QXPlatform::Error;
using QXPlatform::FileDescriptor;
using QXPlatform::Result;

// The C library's own declaration is none for C++.
FileDescriptor openExit(pid_t process) {
  return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

class ChildProgram final : public Program {
 public:
  ChildProgram(pid_t process, FileDescriptor exit) : process_(process), exit_(std::move(exit)) {}
  ~ChildProgram() override {
    if (status_ || released_) return;
    kill();
    QXPlatform::retryInterrupted([this] { return waitpid(process_, nullptr, 0); });
  }
  ChildProgram(const ChildProgram&) = delete;
  ChildProgram& operator=(const ChildProgram&) = delete;

  int exitDescriptor() const override { return exit_.get(); }
  void kill() override {
    if (!status_) ::kill(process_, SIGKILL);
  }
  void release() override { released_ = true; }
  std::optional<int> exitStatus() override {
    int status = 0;
    if (!status_ && waitpid(process_, &status, WNOHANG) == process_) status_ = status;
    return status_;
  }
  int processId() const override { return process_; }

 private:
  const pid_t process_;
  const FileDescriptor exit_;
  std::optional<int> status_;  // known once it has been reaped
  bool released_ = false;
};

std::vector<std::string> mergedEnvironment(const std::vector<std::string>& changes) {
  std::vector<std::string> merged = changes;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view variable(*entry);
    const std::string_view assignment = variable.substr(0, variable.find('=') + 1);
    if (std::ranges::none_of(changes,
                             [&](const std::string& change) { return change.starts_with(assignment); }))
      merged.emplace_back(variable);
  }
  return merged;
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> list;
  list.reserve(texts.size() + 1);
  for (const std::string& text : texts) list.push_back(const_cast<char*>(text.c_str()));
  list.push_back(nullptr);
  return list;
}

// The program finds the signals as it would from a shell, whatever this process does with them.
class SpawnAttributes {
 public:
  explicit SpawnAttributes(short flags) {
    posix_spawnattr_init(&attributes_);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes_, &signals);
    sigaddset(&signals, SIGPIPE);
    sigaddset(&signals, SIGXFSZ);
    posix_spawnattr_setsigdefault(&attributes_, &signals);
    posix_spawnattr_setflags(&attributes_,
                             static_cast<short>(flags | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK));
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;

  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

Result<int> spawn(const ProgramStart& start, int input, int output, short flags) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  if (start.errorOutput != STDERR_FILENO) {
    posix_spawn_file_actions_adddup2(&actions, start.errorOutput, STDERR_FILENO);
  }
  std::vector<std::string> arguments{start.program.native()};
  arguments.insert(arguments.end(), start.arguments.begin(), start.arguments.end());
  const auto environment = mergedEnvironment(start.environment);
  pid_t process = 0;
  const int error = posix_spawnp(&process, start.program.c_str(), &actions, SpawnAttributes(flags).get(),
                                 pointers(arguments).data(), pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) return Error{"cannot start " + start.program.string() + ": " + std::strerror(error)};
  return process;
}

// A file without a name that holds the text, ready to be read.
Result<FileDescriptor> openText(const std::string& text) {
  FileDescriptor file(memfd_create("input", MFD_CLOEXEC));
  if (!file.valid() || write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
      lseek(file.get(), 0, SEEK_SET) != 0)
    return Error{std::strerror(errno)};
  return file;
}

}  // namespace

Result<ProgramPipes> ProgramPipes::open() {
  std::array<int, 2> input{};
  std::array<int, 2> output{};
  if (pipe2(input.data(), O_CLOEXEC) != 0) return Error{std::strerror(errno)};
  FileDescriptor itsInput(input[0]);
  FileDescriptor ourInput(input[1]);
  if (pipe2(output.data(), O_CLOEXEC) != 0) return Error{std::strerror(errno)};
  FileDescriptor ourOutput(output[0]);
  FileDescriptor itsOutput(output[1]);
  fcntl(ourInput.get(), F_SETFL, O_NONBLOCK);
  fcntl(ourOutput.get(), F_SETFL, O_NONBLOCK);
  return ProgramPipes{std::move(ourInput), std::move(ourOutput), std::move(itsInput), std::move(itsOutput)};
}

Result<StartedProgram> startChild(const ProgramStart& start) {
  auto opened = ProgramPipes::open();
  if (!opened) return opened.error();
  ProgramPipes pipes = *std::move(opened);
  const auto text = openText(start.input.value_or(""));
  if (!text) return text.error();
  const auto process =
      spawn(start, start.input ? text->get() : pipes.itsInput.get(), pipes.itsOutput.get(), 0);
  if (!process) return process.error();
  return StartedProgram{std::make_unique<ChildProgram>(*process, openExit(*process)),
                        std::move(pipes.ourInput), std::move(pipes.ourOutput)};
}

Result<int> startDetached(const ProgramStart& start) {
  const FileDescriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
  return spawn(start, nothing.get(), STDERR_FILENO, POSIX_SPAWN_SETSID);
}

Result<int> runToItsEnd(const ProgramStart& start) {
  const FileDescriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
  const auto process = spawn(start, nothing.get(), nothing.get(), 0);
  if (!process) return process.error();
  int status = 0;
  if (QXPlatform::retryInterrupted([&] { return waitpid(*process, &status, 0); }) < 0)
    return Error{start.program.string() + ": " + std::strerror(errno)};
  return status;
}

}  // namespace QXAgent
