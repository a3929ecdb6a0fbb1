#include "tools/qx/CarouselCommand.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>

#include "QXPlatform/foundation/Executable.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

// Beside this program in the build tree; installed, among the programs that nobody calls by hand.
std::filesystem::path drawingProgram() {
  std::error_code ignored;
  const auto directory = QXPlatform::executablePath().parent_path();
  auto beside = directory / "qx-carousel";
  if (std::filesystem::exists(beside, ignored)) return beside;
  return directory.parent_path() / QX_LIBEXEC_DIR / "qx-carousel";
}

// What the drawing program is started with.
struct Arguments {
  explicit Arguments(std::string encodedInvocation) : invocation(std::move(encodedInvocation)) {}

  std::string name = "qx-carousel";
  std::string invocation;
  std::array<char*, 3> pointers{name.data(), invocation.data(), nullptr};
};

std::string cannotStart(const std::string& program, int error) {
  if (error == ENOENT) return "the carousel is not in this build: there is no " + program;
  return "cannot start " + program + ": " + std::strerror(error);
}

}  // namespace

int runCarousel(const SimulatorOptions& simulator, const CarouselOptions& options) {
  const std::string program = drawingProgram();
  const auto invocation = QXPlatform::encodeJSON(CarouselInvocation{simulator, options});
  if (!invocation) return fail("carousel", invocation.error().message);
  Arguments arguments(*invocation);
  execv(program.c_str(), arguments.pointers.data());
  return fail("carousel", cannotStart(program, errno));
}

std::optional<QXPlatform::Error> drawCarousel(const SimulatorOptions& simulator,
                                              const CarouselOptions& options) {
  const std::string program = drawingProgram();
  const auto invocation = QXPlatform::encodeJSON(CarouselInvocation{simulator, options});
  if (!invocation) return invocation.error();
  Arguments arguments(*invocation);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  const int error =
      posix_spawn(&process, program.c_str(), &actions, nullptr, arguments.pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) return QXPlatform::Error{cannotStart(program, error)};

  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return QXPlatform::Error{program + ": " + std::strerror(errno)};
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return std::nullopt;
  return QXPlatform::Error{program + " failed"};
}

}  // namespace qx
