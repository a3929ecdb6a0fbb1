#pragma once

#include <cstddef>

namespace support {

// How many objects this thread has put on the heap since this object was made. Counts in programs that list
// AllocationCount.cpp among their sources.
class AllocationCount {
 public:
  std::size_t count() const { return total() - before_; }

 private:
  static std::size_t total();

  const std::size_t before_ = total();
};

}  // namespace support
