#pragma once

#include <chrono>
#include <thread>

namespace support {

// In real time. Long enough for a busy machine under a sanitizer: reaching it means that the thing never
// comes.
constexpr std::chrono::seconds kPatience{20};

// Looks again and again until `condition()` holds; returns whether it came to hold in time.
template <typename Condition>
bool eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

inline std::chrono::steady_clock::time_point soon() {
  return std::chrono::steady_clock::now() + kPatience;
}

}  // namespace support
