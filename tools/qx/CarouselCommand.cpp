#include "tools/qx/CarouselCommand.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>

namespace qx {

namespace {

// Beside this program in the build tree; installed, among the programs that nobody calls by hand.
std::filesystem::path drawingProgram() {
  const auto directory = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  auto beside = directory / "qx-carousel";
  if (std::filesystem::exists(beside)) return beside;
  return directory.parent_path() / QX_LIBEXEC_DIR / "qx-carousel";
}

}  // namespace

int runCarousel(const SimulatorOptions& simulator, const CarouselOptions& options) {
  const std::string program = drawingProgram();
  std::string name = "qx-carousel";
  std::string argument = encodeInvocation({simulator, options});
  std::array<char*, 3> arguments{name.data(), argument.data(), nullptr};
  execv(program.c_str(), arguments.data());
  std::cerr << "qx carousel: cannot start " << program << ": " << std::strerror(errno) << '\n';
  return 1;
}

}  // namespace qx
