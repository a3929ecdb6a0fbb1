#include "tools/qx/CarouselCommand.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>

#include "QXPlatform/foundation/Executable.h"
#include "agent/extensions/Program.h"
#include "tools/qx/ExtensionEnvironment.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

using QXPlatform::Error;
using QXPlatform::Result;

// Beside this program in the build tree; installed, among the programs that nobody calls by hand.
Result<std::filesystem::path> drawingProgram() {
  std::error_code ignored;
  const auto directory = QXPlatform::executablePath().parent_path();
  const auto beside = directory / "qx-carousel";
  if (std::filesystem::exists(beside, ignored)) return beside;
  const auto installed = directory.parent_path() / QX_LIBEXEC_DIR / "qx-carousel";
  if (std::filesystem::exists(installed, ignored)) return installed;
  return Error{"the carousel is not in this build: there is no " + installed.string()};
}

Result<QXAgent::ProgramStart> drawing(const SimulatorOptions& simulator, const CarouselOptions& options) {
  auto program = drawingProgram();
  if (!program) return program.error();
  auto invocation = QXPlatform::encodeJSON(CarouselInvocation{simulator, options});
  if (!invocation) return invocation.error();
  return QXAgent::ProgramStart{*std::move(program), {*std::move(invocation)}, {}};
}

}  // namespace

bool hasCarousel() {
  return drawingProgram().ok();
}

int runCarousel(const SimulatorOptions& simulator, const CarouselOptions& options) {
  const auto start = drawing(simulator, options);
  if (!start) return fail("carousel", start.error().message);
  if (options.extension) setEnvironmentOf(*options.extension, simulator);
  execl(start->program.c_str(), start->program.c_str(), start->arguments.front().c_str(), nullptr);
  return fail("carousel", "cannot start " + start->program.string() + ": " + std::strerror(errno));
}

std::optional<Error> drawCarousel(const SimulatorOptions& simulator, const CarouselOptions& options) {
  const auto start = drawing(simulator, options);
  if (!start) return start.error();
  const auto status = QXAgent::runToItsEnd(*start);
  if (!status) return status.error();
  if (WIFEXITED(*status) && WEXITSTATUS(*status) == 0) return std::nullopt;
  return Error{start->program.string() + " failed"};
}

}  // namespace qx
