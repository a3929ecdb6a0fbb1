#include "tools/qx/ExtensionProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/foundation/JSON.h"

namespace qx {

namespace {

using platform::Dictionary;
using platform::Error;
using platform::Result;

constexpr std::size_t kReadSize = 65536;

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;
};

bool openPipe(Pipe& pipe) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return false;
  pipe = {ends[0], ends[1]};
  return true;
}

void closePipe(const Pipe& pipe) {
  close(pipe.readEnd);
  close(pipe.writeEnd);
}

int spawn(const std::filesystem::path& program, const std::vector<std::string>& arguments, const Pipe& input,
          const Pipe& output, pid_t& process) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input.readEnd, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output.writeEnd, STDOUT_FILENO);
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const int error = posix_spawn(&process, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

Result<Dictionary> parseAnswer(std::string_view line) {
  const auto parsed = platform::parseJSON(line);
  auto answer = parsed ? parsed->dictionary() : std::nullopt;
  if (!answer) return Error{"the extension answered with something else than a JSON object"};
  if (const platform::Value* error = answer->find("error")) {
    return Error{"the extension refused the push: " + error->description()};
  }
  return *std::move(answer);
}

}  // namespace

Result<std::unique_ptr<ExtensionProcess>> ExtensionProcess::start(const std::filesystem::path& program,
                                                                  const std::vector<std::string>& arguments) {
  Pipe input;
  Pipe output;
  if (!openPipe(input)) return Error{std::strerror(errno)};
  if (!openPipe(output)) {
    closePipe(input);
    return Error{std::strerror(errno)};
  }
  pid_t process = 0;
  const int error = spawn(program, arguments, input, output, process);
  close(input.readEnd);
  close(output.writeEnd);
  if (error != 0) {
    close(input.writeEnd);
    close(output.readEnd);
    return Error{"cannot start " + program.string() + ": " + std::strerror(error)};
  }
  return std::unique_ptr<ExtensionProcess>(new ExtensionProcess(process, input.writeEnd, output.readEnd));
}

ExtensionProcess::ExtensionProcess(pid_t process, int input, int output)
    : process_(process), input_(input), output_(output), reader_([this] { readAnswers(); }) {}

ExtensionProcess::~ExtensionProcess() {
  {
    const std::lock_guard lock(mutex_);
    close(std::exchange(input_, -1));
  }
  reader_.join();
  close(output_);
  waitpid(process_, nullptr, 0);
}

Result<Dictionary> ExtensionProcess::ask(const Dictionary& request) {
  auto text = platform::writeJSON(request, platform::JSONStyle::compact);
  if (!text) return text.error();
  std::future<Answer> answer;
  {
    const std::lock_guard lock(mutex_);
    if (ended_ || !writeLine(*std::move(text))) return Error{"the extension has ended"};
    answer = waiting_.emplace_back().get_future();
  }
  return answer.get();
}

bool ExtensionProcess::writeLine(std::string line) {
  line.push_back('\n');
  for (std::string_view rest = line; !rest.empty();) {
    const ssize_t written = write(input_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

void ExtensionProcess::readAnswers() {
  std::string pending;
  std::string chunk(kReadSize, '\0');
  for (;;) {
    const ssize_t count = read(output_, chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    pending.append(chunk, 0, static_cast<std::size_t>(count));
    std::size_t start = 0;
    for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n', start)) {
      auto answer = parseAnswer(std::string_view(pending).substr(start, end - start));
      start = end + 1;
      const std::lock_guard lock(mutex_);
      if (waiting_.empty()) continue;
      waiting_.front().set_value(std::move(answer));
      waiting_.pop_front();
    }
    pending.erase(0, start);
  }
  failWaiting();
}

void ExtensionProcess::failWaiting() {
  const std::lock_guard lock(mutex_);
  ended_ = true;
  for (auto& promise : waiting_) promise.set_value(Error{"the extension ended before it answered"});
  waiting_.clear();
}

}  // namespace qx
