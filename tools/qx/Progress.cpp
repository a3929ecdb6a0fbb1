#include "tools/qx/Progress.h"

#include <unistd.h>

#include <iomanip>
#include <sstream>
#include <string_view>
#include <utility>

#include "platform/log/StandardError.h"

namespace qx {

namespace {

constexpr auto kQuietFor = std::chrono::seconds(1);
constexpr std::string_view kWipe = "\r\033[K";
constexpr auto kRefresh = std::chrono::milliseconds(100);

}  // namespace

Progress::Progress(std::string unit)
    : unit_(std::move(unit)),
      onTerminal_(isatty(STDERR_FILENO) != 0),
      start_(std::chrono::steady_clock::now()) {}

Progress::~Progress() {
  if (shown_) platform::writeToStandardError(kWipe);
}

void Progress::show(std::size_t done) {
  const auto now = std::chrono::steady_clock::now();
  if (!onTerminal_ || now - start_ < kQuietFor || now - shownLast_ < kRefresh) return;
  const std::chrono::duration<double> elapsed = now - start_;
  std::ostringstream line;
  line << kWipe << done << ' ' << unit_ << ", " << std::fixed << std::setprecision(1)
       << static_cast<double>(done) / elapsed.count() << " a second";
  platform::writeToStandardError(line.str());
  shownLast_ = now;
  shown_ = true;
}

}  // namespace qx
