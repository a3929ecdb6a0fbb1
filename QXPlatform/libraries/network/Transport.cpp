#include "QXPlatform/libraries/network/Transport.h"

#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <new>
#include <optional>
#include <utility>

#include "QXPlatform/dispatch/ThreadSet.h"
#include "QXPlatform/log/StandardError.h"

namespace QXPlatform {
namespace {

// Idle ones; each holds a descriptor and, with TLS, some 50 KB.
constexpr long kPooledConnections = 6;
// How often a thread that cannot be woken looks for itself, and one that can whether it is needed elsewhere.
constexpr int kLookMilliseconds = 50;
constexpr int kLongestWaitMilliseconds = 1000;

// A connection that the other side has closed must not end the process; TLS libraries know no other way to
// write to it.
class BrokenPipesIgnored {
 public:
  BrokenPipesIgnored() {
    sigemptyset(&brokenPipe_);
    sigaddset(&brokenPipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe_, &previous_);
  }
  ~BrokenPipesIgnored() {
    constexpr timespec kNoWait{};
    while (sigtimedwait(&brokenPipe_, nullptr, &kNoWait) == -1 && errno == EINTR) continue;
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
  }
  BrokenPipesIgnored(const BrokenPipesIgnored&) = delete;
  BrokenPipesIgnored& operator=(const BrokenPipesIgnored&) = delete;

 private:
  sigset_t brokenPipe_;
  sigset_t previous_;
};

// Whoever waits for it has a deadline.
void sayThatOneIsGivenUp() {
  writeToStandardError("out of memory: a transfer is given up\n");
}

}  // namespace

Transport& Transport::shared() {
  static NeverDestroyed<Transport> transport;
  return *transport;
}

bool Transport::start(std::shared_ptr<Transfer> transfer) {
  const std::lock_guard lock(mutex_);
  if (!isReady()) return false;
  if (stage_ == Stage::ended) queue_.async([this] { run(); });
  stage_ = std::max(stage_, Stage::submitted);
  give({Command::Kind::start, std::move(transfer)});
  return true;
}

void Transport::cancel(std::shared_ptr<Transfer> transfer) {
  const std::lock_guard lock(mutex_);
  if (stage_ != Stage::ended) give({Command::Kind::cancel, std::move(transfer)});
}

void Transport::give(Command command) {
  commands_.push_back(std::move(command));
  if (stage_ == Stage::running) curl_multi_wakeup(multi_.get());
}

bool Transport::isReady() {
  if (!isInitialised_ && curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) return false;
  // Registered after the library's own handlers, so that transfers have stopped before they take TLS down.
  if (!std::exchange(isInitialised_, true)) static_cast<void>(std::atexit([] { shared().stop(); }));
  if (stage_ == Stage::ended && !wakeable_) openMulti();
  return multi_ != nullptr;
}

void Transport::openMulti() {
  MultiHandle opened(curl_multi_init());
  if (!opened) return;
  curl_multi_setopt(opened.get(), CURLMOPT_MAXCONNECTS, kPooledConnections);
  wakeable_ = curl_multi_wakeup(opened.get()) == CURLM_OK;
  multi_ = std::move(opened);
}

void Transport::stop() {
  std::unique_lock lock(mutex_);
  stopping_ = true;
  if (stage_ == Stage::running) curl_multi_wakeup(multi_.get());
  ended_.wait(lock, [this] { return stage_ != Stage::running; });
}

void Transport::run() {
  const BrokenPipesIgnored ignored;
  bool goesOn = true;
  while (goesOn) {
    try {
      goesOn = takeCommands() && moveOn();
    } catch (const std::bad_alloc&) {
      sayThatOneIsGivenUp();
    }
  }
}

// False when the thread is needed elsewhere first.
bool Transport::moveOn() {
  int running = 0;
  curl_multi_perform(multi_.get(), &running);
  collectEnded();
  expireOverdue();
  return active_.empty() || await();
}

// False when there is nothing left to do.
bool Transport::takeCommands() {
  std::vector<Command> taken;
  {
    const std::lock_guard lock(mutex_);
    const bool goesOn = !stopping_ && !(commands_.empty() && active_.empty());
    stage_ = goesOn ? Stage::running : Stage::ended;
    if (stopping_) ended_.notify_all();
    if (!goesOn) return false;
    taken.swap(commands_);
  }
  for (Command& command : taken) {
    try {
      carryOut(std::move(command));
    } catch (const std::bad_alloc&) {
      sayThatOneIsGivenUp();
    }
  }
  return true;
}

void Transport::carryOut(Command command) {
  if (command.kind == Command::Kind::start) {
    begin(std::move(command.transfer));
  } else if (isActive(command.transfer.get())) {
    finish(command.transfer.get(), command.transfer->error(URLError::Code::cancelled, "cancelled"));
  }
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
    curl_multi_remove_handle(multi_.get(), easy);
    if (transfer->continueAfter(code)) {
      curl_multi_add_handle(multi_.get(), transfer->easy());
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

// False when nobody else can run what waits for a thread.
bool Transport::await() {
  if (!ThreadSet::shared().aboutToWait() && comeBackLater()) return false;
  curl_multi_poll(multi_.get(), nullptr, 0, pollMilliseconds(), nullptr);
  return true;
}

bool Transport::comeBackLater() {
  const std::lock_guard lock(mutex_);
  if (stopping_) return false;
  queue_.async([this] { run(); });
  stage_ = Stage::submitted;
  return true;
}

int Transport::pollMilliseconds() const {
  const int untilWoken = wakeable_ ? kLongestWaitMilliseconds : kLookMilliseconds;
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
