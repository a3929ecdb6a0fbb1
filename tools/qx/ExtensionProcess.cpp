#include "tools/qx/ExtensionProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <utility>

#include "platform/foundation/JSON.h"

namespace qx {

namespace {

using platform::Dictionary;
using platform::Error;
using platform::Result;

constexpr std::size_t kReadSize = 65536;
constexpr std::chrono::milliseconds kLook{20};
// A receipt may take 22 seconds after its push has been shown, and the program is given as much again as
// the built-in extension.
constexpr std::chrono::seconds kLongestExit{35};

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
  // The program gets SIGPIPE as it would from a shell, whatever this process does with it.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const int error = posix_spawn(&process, program.c_str(), &actions, &attributes, argv.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

// What a line answers: nothing unless it is a result with an identifier.
std::optional<std::pair<std::string, Dictionary>> readAnswer(std::string_view line) {
  const auto parsed = platform::parseJSON(line);
  auto answer = parsed ? parsed->dictionary() : std::nullopt;
  if (!answer || !answer->contains("outcome") || !answer->contains("content")) return std::nullopt;
  const platform::Value* identifier = answer->find("identifier");
  const auto text = identifier != nullptr ? identifier->string() : std::nullopt;
  if (!text) return std::nullopt;
  return std::pair(std::string(*text), *std::move(answer));
}

std::optional<Error> judgeExit(int status) {
  if (WIFSIGNALED(status))
    return Error{"the extension ended with signal " + std::to_string(WTERMSIG(status))};
  if (WEXITSTATUS(status) == 0) return std::nullopt;
  return Error{"the extension ended with exit code " + std::to_string(WEXITSTATUS(status))};
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
  fcntl(input.writeEnd, F_SETFL, O_NONBLOCK);
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
    : process_(process), output_(output), input_(input), reader_([this] { readAnswers(); }) {}

ExtensionProcess::~ExtensionProcess() {
  finish();
}

Result<Dictionary> ExtensionProcess::ask(const Dictionary& request, std::chrono::duration<double> limit) {
  auto text = platform::writeJSON(request, platform::JSONStyle::compact);
  if (!text) return text.error();
  std::future<Answer> answer;
  {
    const std::lock_guard lock(questionsMutex_);
    if (ended_) return Error{"the extension has ended"};
    const std::string identifier(request.find("identifier")->string().value_or(""));
    answer = questions_.emplace_back(Question{identifier, {}}).answer.get_future();
  }
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::nanoseconds>(limit);
  // A program that is gone fails the question by closing its output.
  writeLine(*text + "\n", deadline);
  if (answer.wait_until(deadline) == std::future_status::timeout) {
    std::cerr << "qx: the extension has not answered within its time and is ended\n";
    kill(process_, SIGKILL);
    stopReading_ = true;
  }
  return answer.get();
}

void ExtensionProcess::writeLine(std::string_view line, std::chrono::steady_clock::time_point deadline) {
  const std::lock_guard lock(inputMutex_);
  while (!line.empty() && !stopReading_ && std::chrono::steady_clock::now() < deadline) {
    // The pipe does not block, since a program that reads nothing must not hold this up.
    pollfd writable{input_, POLLOUT, 0};
    if (poll(&writable, 1, static_cast<int>(kLook.count())) <= 0) continue;
    const ssize_t written = write(input_, line.data(), line.size());
    if (written < 0 && errno != EINTR && errno != EAGAIN) return;
    if (written > 0) line.remove_prefix(static_cast<std::size_t>(written));
  }
}

void ExtensionProcess::readAnswers() {
  std::string pending;
  std::string chunk(kReadSize, '\0');
  while (!stopReading_) {
    // Looked at in turns, since what the program has started may hold the pipe open for ever.
    pollfd readable{output_, POLLIN, 0};
    if (poll(&readable, 1, static_cast<int>(kLook.count())) <= 0) continue;
    const ssize_t count = read(output_, chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    pending.append(chunk, 0, static_cast<std::size_t>(count));
    std::size_t start = 0;
    for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n', start)) {
      takeLine(std::string_view(pending).substr(start, end - start));
      start = end + 1;
    }
    pending.erase(0, start);
  }
  failAll();
}

void ExtensionProcess::takeLine(std::string_view line) {
  if (auto read = readAnswer(line)) {
    const std::lock_guard lock(questionsMutex_);
    const auto question = std::ranges::find(questions_, read->first, &Question::identifier);
    if (question != questions_.end()) {
      question->answer.set_value(std::move(read->second));
      questions_.erase(question);
      return;
    }
  }
  std::cerr << "extension: " + std::string(line) + "\n" << std::flush;
}

void ExtensionProcess::failAll() {
  const std::lock_guard lock(questionsMutex_);
  ended_ = true;
  for (Question& question : questions_)
    question.answer.set_value(Error{"the extension ended before it answered"});
  questions_.clear();
}

std::optional<Error> ExtensionProcess::finish() {
  if (std::exchange(finished_, true)) return std::nullopt;
  {
    const std::lock_guard lock(inputMutex_);
    close(std::exchange(input_, -1));
  }
  auto problem = waitForExit();
  stopReading_ = true;
  reader_.join();
  close(output_);
  return problem;
}

std::optional<Error> ExtensionProcess::waitForExit() {
  const auto deadline = std::chrono::steady_clock::now() + kLongestExit;
  int status = 0;
  while (waitpid(process_, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() >= deadline) {
      kill(process_, SIGKILL);
      waitpid(process_, &status, 0);
      return Error{"the extension did not exit after its input had ended, and was ended"};
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return judgeExit(status);
}

}  // namespace qx
