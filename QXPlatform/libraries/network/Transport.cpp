#include "QXPlatform/libraries/network/Transport.h"

#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <limits>
#include <new>
#include <optional>
#include <utility>

#include "QXPlatform/dispatch/ThreadName.h"
#include "QXPlatform/log/StandardError.h"

namespace QXPlatform {
namespace {

// Idle ones; each holds a descriptor and, with TLS, some 50 KB.
constexpr long kPooledConnections = 6;
// How often a thread that cannot be woken looks for itself.
constexpr int kLookMilliseconds = 50;

// Signals are for the host's threads. A broken pipe in particular would otherwise end the process.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace

Transport& Transport::shared() {
  static NeverDestroyed<Transport> transport;
  return *transport;
}

bool Transport::isRunning() {
  if (thread_.joinable()) return true;
  if (!isInitialised_ && curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) return false;
  // Registered after the library's own handlers, so that the thread is gone before they take TLS down.
  if (!std::exchange(isInitialised_, true)) static_cast<void>(std::atexit([] { shared().stop(); }));
  if (!multi_ && !openMulti()) return false;
  try {
    const SignalsBlocked inherited;
    thread_ = std::thread([this] { run(); });
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

bool Transport::openMulti() {
  MultiHandle opened(curl_multi_init());
  if (!opened) return false;
  curl_multi_setopt(opened.get(), CURLMOPT_MAXCONNECTS, kPooledConnections);
  wakeable_ = curl_multi_wakeup(opened.get()) == CURLM_OK;
  multi_ = std::move(opened);
  return true;
}

void Transport::stop() {
  {
    const std::lock_guard lock(mutex_);
    if (!thread_.joinable()) return;
    stopping_ = true;
    curl_multi_wakeup(multi_.get());
  }
  thread_.join();
}

bool Transport::start(std::shared_ptr<Transfer> transfer) {
  {
    const std::lock_guard lock(mutex_);
    if (!isRunning()) return false;
  }
  give({Command::Kind::start, std::move(transfer)});
  return true;
}
void Transport::cancel(std::shared_ptr<Transfer> transfer) {
  give({Command::Kind::cancel, std::move(transfer)});
}

void Transport::give(Command command) {
  const std::lock_guard lock(mutex_);
  commands_.push_back(std::move(command));
  curl_multi_wakeup(multi_.get());
}

void Transport::run() {
  setCurrentThreadName("network");
  bool goesOn = true;
  while (goesOn) {
    try {
      goesOn = takeCommands();
      if (goesOn) moveOn();
    } catch (const std::bad_alloc&) {
      // Whoever waits for the transfer that was at work has a deadline.
      writeToStandardError("out of memory: a transfer is given up\n");
    }
  }
}

void Transport::moveOn() {
  int running = 0;
  curl_multi_perform(multi_.get(), &running);
  collectEnded();
  expireOverdue();
  becomeWakeable();
  curl_multi_poll(multi_.get(), nullptr, 0, pollMilliseconds(), nullptr);
}

// False when the thread is to end.
bool Transport::takeCommands() {
  std::vector<Command> taken;
  {
    const std::lock_guard lock(mutex_);
    if (stopping_) return false;
    taken.swap(commands_);
  }
  for (Command& command : taken) {
    if (command.kind == Command::Kind::start) {
      begin(std::move(command.transfer));
    } else if (isActive(command.transfer.get())) {
      finish(command.transfer.get(), command.transfer->error(URLError::Code::cancelled, "cancelled"));
    }
  }
  return true;
}

void Transport::begin(std::shared_ptr<Transfer> transfer) {
  if (auto refused = transfer->begin()) {
    transfer->complete(std::move(refused));
    return;
  }
  curl_multi_add_handle(multi_.get(), transfer->easy());
  active_.push_back(std::move(transfer));
}

void Transport::collectEnded() {
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    CURL* const easy = message->easy_handle;
    const CURLcode code = message->data.result;
    Transfer* transfer = nullptr;
    curl_easy_getinfo(easy, CURLINFO_PRIVATE, &transfer);
    if (transfer->continueAfter(code)) {
      curl_multi_remove_handle(multi_.get(), easy);
      curl_multi_add_handle(multi_.get(), easy);
    } else {
      finish(transfer, std::nullopt);
    }
  }
}

void Transport::expireOverdue() {
  if (active_.empty()) return;
  const Clock::TimePoint now = Clock::current().now();
  std::vector<std::shared_ptr<Transfer>> overdue;
  std::copy_if(active_.begin(), active_.end(), std::back_inserter(overdue),
               [now](const auto& transfer) { return transfer->deadline() <= now; });
  for (const auto& transfer : overdue) finish(transfer.get(), transfer->timeOutError());
}

void Transport::becomeWakeable() {
  if (wakeable_ || !active_.empty()) return;
  const std::lock_guard lock(mutex_);
  openMulti();
}

int Transport::pollMilliseconds() const {
  const int untilWoken = wakeable_ ? std::numeric_limits<int>::max() : kLookMilliseconds;
  if (active_.empty()) return untilWoken;
  const auto next = std::min_element(active_.begin(), active_.end(), [](const auto& left, const auto& right) {
    return left->deadline() < right->deadline();
  });
  const auto wait =
      std::chrono::ceil<std::chrono::milliseconds>(Clock::current().realTimeUntil((*next)->deadline()));
  return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(wait.count(), 0, untilWoken));
}

void Transport::finish(const Transfer* transfer, std::optional<URLError> error) {
  const auto place = std::find_if(active_.begin(), active_.end(),
                                  [transfer](const auto& candidate) { return candidate.get() == transfer; });
  const std::shared_ptr<Transfer> ended = std::move(*place);
  active_.erase(place);
  curl_multi_remove_handle(multi_.get(), ended->easy());
  ended->complete(std::move(error));
}

bool Transport::isActive(const Transfer* transfer) const {
  return std::any_of(active_.begin(), active_.end(),
                     [transfer](const auto& candidate) { return candidate.get() == transfer; });
}

}  // namespace QXPlatform
