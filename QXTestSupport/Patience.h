#pragma once

#include <chrono>

namespace QXTestSupport {

// How long, in real time, a test waits for what must come. Long enough for a busy machine: reaching it means
// that the thing never comes.
constexpr std::chrono::seconds kPatience{20};

inline std::chrono::steady_clock::time_point soon() {
  return std::chrono::steady_clock::now() + kPatience;
}

}  // namespace QXTestSupport
