#include "tests/support/Program.h"

#include <sys/resource.h>

#include <boost/asio/io_context.hpp>
#include <boost/process.hpp>

#include "QXPlatform/foundation/Executable.h"
#include "QXPlatform/foundation/JSON.h"
#include "tests/support/Test.h"

namespace support {

namespace process = boost::process;

namespace {

constexpr std::chrono::minutes kLongestRun{2};

}  // namespace

std::string programPath(std::string_view name) {
  return (QXPlatform::executablePath().parent_path() / name).string();
}

long largestChildMemory() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return usage.ru_maxrss;
}

ProgramResult runProgram(std::string_view name, const std::vector<std::string>& arguments,
                         const std::string& input) {
  boost::asio::io_context context;
  std::future<std::string> output;
  std::future<std::string> errors;
  process::child child(programPath(name), process::args(arguments),
                       process::std_in<boost::asio::buffer(input), process::std_out> output,
                       process::std_err > errors, context);
  context.run_for(kLongestRun);
  if (!context.stopped()) {
    child.terminate();
    ADD_FAILURE() << name << " did not end";
    return {};
  }
  child.wait();
  return {child.exit_code(), output.get(), errors.get()};
}

std::vector<QXPlatform::Dictionary> ProgramResult::lines() const {
  std::vector<QXPlatform::Dictionary> objects;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);) {
    const auto parsed = QXPlatform::parseJSON(line);
    const auto object = parsed ? parsed->dictionary() : std::nullopt;
    if (object) {
      objects.push_back(*object);
    } else {
      ADD_FAILURE() << "not a JSON object: " << line;
    }
  }
  return objects;
}

}  // namespace support
