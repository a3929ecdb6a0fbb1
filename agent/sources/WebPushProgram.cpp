#include "agent/sources/WebPushProgram.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <system_error>
#include <utility>

#include "QXPlatform/foundation/Executable.h"
#include "agent/extensions/Program.h"
#include "agent/webpush/KeyBytes.h"

namespace QXAgent {

namespace {

using QXPlatform::Error;
using QXPlatform::Result;
using SteadyClock = std::chrono::steady_clock;

constexpr const char* kName = "qx-agent-webpush";
constexpr std::chrono::seconds kLongestRun{10};

// Beside this program in the build tree; installed, among the programs that nobody calls by hand.
std::filesystem::path programFile() {
  std::error_code ignored;
  const auto directory = QXPlatform::executablePath().parent_path();
  auto beside = directory / kName;
  if (std::filesystem::exists(beside, ignored)) return beside;
  return directory.parent_path() / QX_LIBEXEC_DIR / kName;
}

bool waitUntilReadable(int descriptor, SteadyClock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
  pollfd entry{descriptor, POLLIN, 0};
  const int timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
  return QXPlatform::retryInterrupted([&] { return poll(&entry, 1, timeout); }) > 0;
}

std::optional<std::string> runWith(std::string input) {
  const auto deadline = SteadyClock::now() + kLongestRun;
  const auto started = startChild({programFile(), {}, {}, std::move(input)});
  if (!started) return std::nullopt;
  std::string output;
  std::array<char, 4096> chunk{};
  for (;;) {
    if (!waitUntilReadable(started->output.get(), deadline)) return std::nullopt;
    const ssize_t count =
        QXPlatform::retryInterrupted([&] { return read(started->output.get(), chunk.data(), chunk.size()); });
    if (count <= 0) break;
    output.append(chunk.data(), static_cast<std::size_t>(count));
  }
  if (!waitUntilReadable(started->program->exitDescriptor(), deadline)) return std::nullopt;
  if (started->program->exitStatus() != 0) return std::nullopt;
  return output;
}

}  // namespace

std::optional<SubscriptionKeys> makeKeysApart() {
  return keysFromBytes(runWith("").value_or(""));
}

std::optional<Result<std::string>> openApart(const SubscriptionKeys& keys, std::string_view sealed) {
  auto answer = runWith(toBytes(keys).append(sealed));
  if (!answer || answer->empty()) return std::nullopt;
  const bool isOpen = answer->front() == '+';
  answer->erase(0, 1);
  return isOpen ? Result<std::string>(*std::move(answer)) : Error{*std::move(answer)};
}

}  // namespace QXAgent
