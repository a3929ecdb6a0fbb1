#pragma once

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/Test.h"

namespace support {

// A child of the test. Killed, if need be, when this object goes.
class ChildProcess {
 public:
  explicit ChildProcess(pid_t process) : process_(process) {
    if (process < 0) throw std::runtime_error("No child process");
  }
  // A forked copy of the test that runs one function and exits: 0 when it returns without a failed
  // expectation. To be made while no other thread of the test is at work.
  explicit ChildProcess(const std::function<void()>& body) : ChildProcess(fork()) {
    if (process_ > 0) return;
    body();
    std::fflush(nullptr);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
  }
  ~ChildProcess() { kill(); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t id() const { return process_; }

  // Stops it at once, as the system does with an extension that takes too long.
  void kill() {
    if (status_) return;
    ::kill(process_, SIGKILL);
    reap(0);
  }

  bool running() { return !status_ && !reap(WNOHANG); }

  // How it ends by itself before the deadline; as in a shell, 128 more than the signal that ended it.
  std::optional<int> exitCode(std::chrono::milliseconds deadline = std::chrono::seconds(60)) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (running()) {
      if (std::chrono::steady_clock::now() > end) return std::nullopt;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return WIFEXITED(*status_) ? WEXITSTATUS(*status_) : 128 + WTERMSIG(*status_);
  }
  bool succeeds() { return exitCode() == 0; }

 private:
  static pid_t fork() {
    std::fflush(nullptr);
    return ::fork();
  }

  bool reap(int options) {
    int status = 0;
    if (::waitpid(process_, &status, options) != process_) return false;
    status_ = status;
    return true;
  }

  pid_t process_;
  std::optional<int> status_;
};

// Lets one process wait for another.
class Signal {
 public:
  Signal() {
    if (::pipe(ends_) != 0) throw std::runtime_error("No pipe");
  }
  ~Signal() {
    ::close(ends_[0]);
    ::close(ends_[1]);
  }
  Signal(const Signal&) = delete;
  Signal& operator=(const Signal&) = delete;

  bool send() const { return ::write(ends_[1], "!", 1) == 1; }
  // False when nothing is sent in time.
  bool await(std::chrono::milliseconds deadline = std::chrono::seconds(30)) const {
    pollfd readable{ends_[0], POLLIN, 0};
    char byte = 0;
    return ::poll(&readable, 1, static_cast<int>(deadline.count())) == 1 && ::read(ends_[0], &byte, 1) == 1;
  }

 private:
  int ends_[2];
};

}  // namespace support
