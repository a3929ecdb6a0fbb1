#pragma once

#include <cstddef>

namespace support {

// How often this process has asked the system for these things of files since this object was made. Counts in
// programs that list FileCalls.cpp among their sources; under a sanitizer nothing is counted.
class FileCalls {
 public:
  static bool areCounted();

  std::size_t flushes() const { return totalFlushes() - flushesBefore_; }
  std::size_t reads() const { return totalReads() - readsBefore_; }

 private:
  static std::size_t totalFlushes();
  static std::size_t totalReads();

  const std::size_t flushesBefore_ = totalFlushes();
  const std::size_t readsBefore_ = totalReads();
};

}  // namespace support
