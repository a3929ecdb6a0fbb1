#include "bench/ProcessorTime.h"

#include <linux/perf_event.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

ProcessorTime::ProcessorTime() {
  perf_event_attr attributes{};
  attributes.size = sizeof attributes;
  attributes.type = PERF_TYPE_SOFTWARE;
  attributes.config = PERF_COUNT_SW_TASK_CLOCK;
  attributes.inherit = 1;
  constexpr int kThisProcess = 0;
  constexpr int kEveryProcessor = -1;
  constexpr int kNoGroup = -1;
  counter_ = static_cast<int>(::syscall(SYS_perf_event_open, &attributes, kThisProcess, kEveryProcessor,
                                        kNoGroup, PERF_FLAG_FD_CLOEXEC));
  if (counter_ < 0) throw std::system_error(errno, std::generic_category(), "perf_event_open");
}

ProcessorTime::~ProcessorTime() {
  ::close(counter_);
}

std::chrono::nanoseconds ProcessorTime::now() const {
  std::uint64_t nanoseconds = 0;
  if (::read(counter_, &nanoseconds, sizeof nanoseconds) != sizeof nanoseconds) {
    throw std::system_error(errno, std::generic_category(), "processor time");
  }
  return std::chrono::nanoseconds(nanoseconds);
}
