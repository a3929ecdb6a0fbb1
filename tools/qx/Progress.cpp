#include "tools/qx/Progress.h"

#include <unistd.h>

#include <cmath>
#include <iomanip>
#include <sstream>
#include <string_view>
#include <utility>

#include "QXPlatform/log/StandardError.h"

namespace qx {

namespace {

constexpr auto kQuietFor = std::chrono::seconds(1);
constexpr std::string_view kWipe = "\r\033[K";
constexpr auto kRefresh = std::chrono::milliseconds(100);

// Filled up to the part; without one, a block that wanders with the time.
std::string bar(std::optional<double> part, std::chrono::duration<double> elapsed) {
  constexpr std::size_t kWidth = 24;
  constexpr std::size_t kBlock = 3;
  constexpr double kStepsASecond = 8;
  std::string cells(kWidth, '.');
  if (part) {
    const auto filled = static_cast<std::size_t>(*part * kWidth);
    cells.replace(0, filled, filled, '#');
  } else {
    const auto step = static_cast<std::size_t>(elapsed.count() * kStepsASecond) % (kWidth - kBlock + 1);
    cells.replace(step, kBlock, kBlock, '#');
  }
  return "[" + cells + "] ";
}

}  // namespace

Progress::Progress(std::string unit) : unit_(std::move(unit)), start_(std::chrono::steady_clock::now()) {}

bool Progress::isSeen() {
  return isatty(STDERR_FILENO) != 0;
}

Progress::~Progress() {
  if (shown_) QXPlatform::writeToStandardError(kWipe);
}

void Progress::show(std::size_t done, std::optional<double> part) {
  const auto now = std::chrono::steady_clock::now();
  if (now - start_ < kQuietFor || now - shownLast_ < kRefresh) return;
  const std::chrono::duration<double> elapsed = now - start_;
  std::ostringstream line;
  line << kWipe << bar(part, elapsed);
  if (part) line << std::lround(*part * 100) << " %, ";
  line << done << ' ' << unit_ << ", " << std::fixed << std::setprecision(1)
       << static_cast<double>(done) / elapsed.count() << " a second";
  QXPlatform::writeToStandardError(line.str());
  shownLast_ = now;
  shown_ = true;
}

}  // namespace qx
