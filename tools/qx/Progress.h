#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace qx {

// Shows on standard error, as a bar, how far a batch has come, once it has taken over a second. The line is
// wiped at the end.
class Progress {
 public:
  // Whether standard error is a terminal. Elsewhere a bar is of no use.
  static bool isSeen();

  explicit Progress(std::string unit);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // `part`: how much of the whole that is, from 0 to 1; without it the bar only says that there is progress.
  void show(std::size_t done, std::optional<double> part);

 private:
  const std::string unit_;
  const std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point shownLast_;
  bool shown_ = false;
};

}  // namespace qx
