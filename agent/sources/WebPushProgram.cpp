#include "agent/sources/WebPushProgram.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
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
constexpr std::chrono::milliseconds kLook{5};

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

// How it exited; nothing when it has not by then.
std::optional<int> awaitExit(Program& program, SteadyClock::time_point deadline) {
  for (;;) {
    const auto now = SteadyClock::now();
    if (const auto status = program.exitStatus()) return status;
    if (now >= deadline) return std::nullopt;
    // Not in one go: where there was no descriptor left to watch, its exit shows in this way alone.
    waitUntilReadable(program.exitDescriptor(), std::min(deadline, now + kLook));
  }
}

Result<std::string> runWith(std::string input) {
  const Error late{std::string(kName) + " does not come to an end"};
  const auto deadline = SteadyClock::now() + kLongestRun;
  const auto started = startChild({programFile(), {}, {}, std::move(input)});
  if (!started) return started.error();
  std::string output;
  std::array<char, 4096> chunk{};
  for (;;) {
    if (!waitUntilReadable(started->output.get(), deadline)) return late;
    const ssize_t count =
        QXPlatform::retryInterrupted([&] { return read(started->output.get(), chunk.data(), chunk.size()); });
    if (count <= 0) break;
    output.append(chunk.data(), static_cast<std::size_t>(count));
  }
  const auto status = awaitExit(*started->program, deadline);
  if (!status) return late;
  if (*status != 0 || output.empty()) return Error{std::string(kName) + " has failed"};
  return output;
}

}  // namespace

Result<SubscriptionKeys> makeKeysApart() {
  const auto answer = runWith("");
  if (!answer) return Error{"no keys can be made: " + answer.error().message};
  auto keys = keysFromBytes(*answer);
  if (!keys) return Error{"no keys can be made: those of " + std::string(kName) + " are none"};
  return *std::move(keys);
}

Result<std::string, OpeningFailure> openApart(const SubscriptionKeys& keys, std::string_view sealed) {
  const auto answer = runWith(toBytes(keys).append(sealed));
  if (!answer) return OpeningFailure{"messages cannot be opened: " + answer.error().message, false};
  std::string content = answer->substr(1);
  if (answer->front() == '+') return content;
  return OpeningFailure{"a message that does not open: " + std::move(content), true};
}

}  // namespace QXAgent
