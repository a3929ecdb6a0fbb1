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
#include <utility>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/log/StandardError.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

constexpr std::size_t kReadSize = 65536;
constexpr std::chrono::milliseconds kLook{20};
// A receipt may take 22 seconds after its push has been shown, and the program is given as much again as
// the built-in extension.
constexpr std::chrono::seconds kLongestExit{35};
constexpr std::size_t kLongestAnswer = std::size_t{64} << 20;
// The notification lies two levels deep in its answer, and the host may have added to it.
constexpr QXPlatform::JSONLimits kAnswerLimits{QXPlatform::kJSONWritingDepthLimit, 4 * kLongestAnswer};
constexpr int kExitAfterRefusal = 1;

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
  auto text = QXPlatform::writeJSON(request, QXPlatform::JSONStyle::compact);
  if (!text) return text.error();
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::nanoseconds>(limit);
  std::optional<std::future<Answer>> answer;
  {
    // One lock for both, so that the questions stand in the order in which the program reads them.
    const std::lock_guard lock(inputMutex_);
    answer = enqueue(std::string(request.find("identifier")->string().value_or("")));
    // A program that is gone fails the question by closing its output.
    if (answer) writeLine(*text + "\n", deadline);
  }
  if (!answer) return Error{"the extension has ended"};
  if (answer->wait_until(deadline) == std::future_status::timeout) {
    end("has not answered within its time");
  }
  return answer->get();
}

std::optional<std::future<ExtensionProcess::Answer>> ExtensionProcess::enqueue(std::string identifier) {
  const std::lock_guard lock(questionsMutex_);
  if (ended_) return std::nullopt;
  return questions_.emplace_back(Question{std::move(identifier), ++lines_, {}}).answer.get_future();
}

void ExtensionProcess::end(std::string_view reason) {
  if (stopReading_.exchange(true)) return;
  QXPlatform::writeToStandardError(std::string("qx push: the extension ").append(reason) + " and is ended\n");
  kill(process_, SIGKILL);
}

void ExtensionProcess::writeLine(std::string_view line, std::chrono::steady_clock::time_point deadline) {
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
    std::size_t start = 0;
    std::size_t lineEnd = pending.size();
    pending.append(chunk, 0, static_cast<std::size_t>(count));
    while ((lineEnd = pending.find('\n', lineEnd)) != std::string::npos) {
      takeLine(std::string_view(pending).substr(start, lineEnd - start));
      start = ++lineEnd;
    }
    pending.erase(0, start);
    if (pending.size() > kLongestAnswer) end("has printed 64 MiB without a line break");
  }
  failAll();
}

void ExtensionProcess::takeLine(std::string_view line) {
  const auto parsed = QXPlatform::parseJSON(line, kAnswerLimits);
  const auto reply = parsed ? parsed->dictionary() : std::nullopt;
  if (reply && (takeResult(*reply) || takeRefusal(*reply))) return;
  QXPlatform::writeToStandardError(std::string("extension: ").append(line) + "\n");
}

bool ExtensionProcess::takeResult(const Dictionary& reply) {
  const QXPlatform::Value* identifier = reply.find("identifier");
  if (identifier == nullptr || !reply.contains("outcome") || !reply.contains("content")) return false;
  return answerFirst([&](const Question& question) { return identifier->string() == question.identifier; },
                     reply);
}

bool ExtensionProcess::takeRefusal(const Dictionary& reply) {
  const QXPlatform::Value* line = reply.find("line");
  const QXPlatform::Value* error = reply.find("error");
  if (line == nullptr || error == nullptr || !error->string()) return false;
  const bool wasAsked =
      answerFirst([&](const Question& question) { return line->integer() == question.line; },
                  Error{std::string(*error->string())});
  if (wasAsked) hasRefused_ = true;
  return wasAsked;
}

template <typename Condition>
bool ExtensionProcess::answerFirst(const Condition& isMeant, Answer answer) {
  const std::lock_guard lock(questionsMutex_);
  const auto question = std::ranges::find_if(questions_, isMeant);
  if (question == questions_.end()) return false;
  question->answer.set_value(std::move(answer));
  questions_.erase(question);
  return true;
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
  const bool exited = waitForExit();
  if (!exited) kill(process_, SIGKILL);
  stopReading_ = true;
  reader_.join();
  close(output_);
  int status = 0;
  waitpid(process_, &status, 0);
  if (!exited) return Error{"the extension did not exit after its input had ended, and was ended"};
  return judgeExit(status);
}

bool ExtensionProcess::waitForExit() const {
  const auto deadline = std::chrono::steady_clock::now() + kLongestExit;
  siginfo_t exit{};
  while (waitid(P_PID, static_cast<id_t>(process_), &exit, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         exit.si_pid == 0) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

std::optional<Error> ExtensionProcess::judgeExit(int status) const {
  if (WIFSIGNALED(status))
    return Error{"the extension ended with signal " + std::to_string(WTERMSIG(status))};
  const int code = WEXITSTATUS(status);
  if (code == 0 || (code == kExitAfterRefusal && hasRefused_)) return std::nullopt;
  return Error{"the extension ended with exit code " + std::to_string(code)};
}

}  // namespace qx
