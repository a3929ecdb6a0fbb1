#include "tools/qx/ExtensionClient.h"

#include <poll.h>
#include <sys/wait.h>

#include <future>
#include <utility>

#include "QXPlatform/log/StandardError.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

// A receipt may take 22 seconds after its push has been shown, and the program is given as much again as
// the built-in extension.
constexpr std::chrono::seconds kLongestExit{35};
constexpr int kExitAfterRefusal = 1;

void printChatter(std::string_view line) {
  QXPlatform::writeToStandardError(std::string("extension: ").append(line) + "\n");
}

}  // namespace

Result<std::unique_ptr<ExtensionClient>> ExtensionClient::start(const QXAgent::ProgramStart& start) {
  auto started = QXAgent::startChild(start);
  if (!started) return started.error();
  return std::unique_ptr<ExtensionClient>(new ExtensionClient(*std::move(started)));
}

ExtensionClient::ExtensionClient(QXAgent::StartedProgram started)
    : process_(std::move(started), printChatter), conversation_([this] { converse(); }) {}

ExtensionClient::~ExtensionClient() {
  finish();
}

Result<Dictionary> ExtensionClient::ask(const Dictionary& request, std::chrono::duration<double> limit) {
  const std::string identifier(request["identifier"].string().value_or(""));
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return !inHand_.contains(identifier); });
  inHand_.insert(identifier);
  lock.unlock();
  auto answer = await(request, limit);
  lock.lock();
  inHand_.erase(identifier);
  changed_.notify_all();
  return answer;
}

Result<Dictionary> ExtensionClient::await(const Dictionary& request, std::chrono::duration<double> limit) {
  const auto promise = std::make_shared<std::promise<Result<Dictionary>>>();
  auto answer = promise->get_future();
  {
    const std::lock_guard lock(mutex_);
    if (process_.hasEnded()) return Error{"the extension has ended"};
    process_.ask(request, [promise](auto reply) { promise->set_value(std::move(reply)); });
  }
  if (answer.wait_for(limit) == std::future_status::timeout)
    end("the extension has not answered within its time");
  return answer.get();
}

void ExtensionClient::end(const std::string& reason) {
  const std::lock_guard lock(mutex_);
  process_.end(reason);
}

void ExtensionClient::converse() {
  pollfd ready{process_.descriptor(), POLLIN, 0};
  while (true) {
    poll(&ready, 1, -1);
    const std::lock_guard lock(mutex_);
    process_.handleEvents();
    if (!process_.hasExited()) continue;
    changed_.notify_all();
    return;
  }
}

std::optional<Error> ExtensionClient::finish() {
  if (std::exchange(finished_, true)) return std::nullopt;
  {
    std::unique_lock lock(mutex_);
    process_.closeInput();
    const bool exited = changed_.wait_for(lock, kLongestExit, [this] { return process_.hasExited(); });
    if (!exited) process_.end("the extension did not exit after its input had ended");
  }
  conversation_.join();
  if (process_.endReason()) return Error{*process_.endReason() + " and was ended"};
  return judgeExit(process_.program().exitStatus().value_or(0));
}

std::optional<Error> ExtensionClient::judgeExit(int status) const {
  if (WIFSIGNALED(status))
    return Error{"the extension ended with signal " + std::to_string(WTERMSIG(status))};
  const int code = WEXITSTATUS(status);
  if ((code == 0 && !process_.owesAnswers()) || (code == kExitAfterRefusal && process_.hasRefused()))
    return std::nullopt;
  return Error{"the extension ended with exit code " + std::to_string(code)};
}

}  // namespace qx
