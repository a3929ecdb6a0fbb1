#include "QXPlatform/dispatch/ThreadSignal.h"

#include <semaphore.h>

#include <cerrno>
#include <ctime>

namespace QXPlatform {

class ThreadSignal::Count {
 public:
  Count() { ::sem_init(&semaphore, 0, 0); }
  ~Count() { ::sem_destroy(&semaphore); }
  Count(const Count&) = delete;
  Count& operator=(const Count&) = delete;

  sem_t semaphore{};
};

ThreadSignal::ThreadSignal() : sent_(std::make_unique<Count>()) {}

ThreadSignal::~ThreadSignal() = default;

void ThreadSignal::send() {
  ::sem_post(&sent_->semaphore);
}

void ThreadSignal::wait() {
  while (::sem_wait(&sent_->semaphore) != 0) {
  }
}

bool ThreadSignal::waitFor(std::chrono::nanoseconds patience) {
  const auto end = std::chrono::steady_clock::now().time_since_epoch() + patience;
  const auto seconds = std::chrono::floor<std::chrono::seconds>(end);
  const timespec deadline{seconds.count(), (end - seconds).count()};
  int result = 0;
  do {
    result = ::sem_clockwait(&sent_->semaphore, CLOCK_MONOTONIC, &deadline);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

}  // namespace QXPlatform
