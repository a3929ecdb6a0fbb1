#pragma once

#include <chrono>

// The processor time of this process, its threads and the processes that it forks, those that have ended
// among them, since the counter was made. Who comes later is counted, who was there before is not.
class ProcessorTime {
 public:
  // Throws std::system_error where the system lets nobody count.
  ProcessorTime();
  ~ProcessorTime();
  ProcessorTime(const ProcessorTime&) = delete;
  ProcessorTime& operator=(const ProcessorTime&) = delete;

  std::chrono::nanoseconds now() const;

 private:
  int counter_;
};
