#include "tests/support/AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

// A sanitizer has operators of its own, which are not to be replaced: there nothing is counted.
#ifndef QX_SANITIZED
void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
#endif

namespace support {

std::size_t AllocationCount::total() {
  return allocations;
}

}  // namespace support
