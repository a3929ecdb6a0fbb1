#include "agent/sources/Apart.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "QXPlatform/files/FileDescriptor.h"

namespace QXAgent {

namespace {

using QXPlatform::FileDescriptor;

[[noreturn]] void runAndExit(const std::function<std::string()>& function, int output) {
  const std::string result = function();
  std::string_view rest = result;
  while (!rest.empty()) {
    const ssize_t written = write(output, rest.data(), rest.size());
    if (written < 0) _exit(1);
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  _exit(0);
}

std::string readAll(int input) {
  std::string text;
  std::array<char, 4096> chunk{};
  ssize_t count = 0;
  while ((count = QXPlatform::retryInterrupted([&] { return read(input, chunk.data(), chunk.size()); })) > 0)
    text.append(chunk.data(), static_cast<std::size_t>(count));
  return text;
}

}  // namespace

std::optional<std::string> runApart(const std::function<std::string()>& function) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  const FileDescriptor input(ends[0]);
  FileDescriptor output(ends[1]);
  const pid_t process = fork();
  if (process < 0) return std::nullopt;
  if (process == 0) runAndExit(function, output.get());
  output.close();
  std::string result = readAll(input.get());
  int status = 0;
  QXPlatform::retryInterrupted([&] { return waitpid(process, &status, 0); });
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
  return result;
}

}  // namespace QXAgent
