#include "tests/support/Program.h"

#include <fcntl.h>
#include <sys/resource.h>

#include "QXPlatform/foundation/Executable.h"
#include "QXPlatform/foundation/JSON.h"

namespace support {

namespace {

constexpr std::chrono::minutes kLongestRun{2};

void redirect(int descriptor, const char* path, int flags) {
  ::dup2(::open(path, flags, 0600), descriptor);
}

// A copy of a process with several threads may not allocate: whichever of them was about to would have left
// the allocator locked. So everything is laid out before the fork.
pid_t start(const std::string& program, const std::vector<std::string>& arguments,
            const TemporaryDirectory& files) {
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  const std::array<std::string, 3> paths{files.path("input"), files.path("output"), files.path("errors")};
  const pid_t process = ::fork();
  if (process != 0) return process;
  redirect(STDIN_FILENO, paths[0].c_str(), O_RDONLY);
  redirect(STDOUT_FILENO, paths[1].c_str(), O_WRONLY | O_CREAT | O_APPEND);
  redirect(STDERR_FILENO, paths[2].c_str(), O_WRONLY | O_CREAT | O_APPEND);
  ::execv(program.c_str(), words.data());
  ::_exit(127);
}

}  // namespace

std::string programPath(std::string_view name) {
  return (QXPlatform::executablePath().parent_path() / name).string();
}

long largestChildMemory() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return usage.ru_maxrss;
}

RunningProgram::RunningProgram(std::string_view name, const std::vector<std::string>& arguments,
                               std::string_view input)
    : process_([&] {
        files_.write("input", input);
        return start(programPath(name), arguments, files_);
      }()) {}

std::string RunningProgram::output() const {
  return files_.read("output");
}

QXPlatform::Dictionary RunningProgram::nextLine() {
  ProgramResult result;
  const auto hasLine = [&] {
    result.output = output();
    return std::ranges::count(result.output, '\n') > static_cast<std::ptrdiff_t>(linesRead_);
  };
  return eventually(hasLine) ? result.lines().at(linesRead_++) : QXPlatform::Dictionary();
}

ProgramResult RunningProgram::wait() {
  const auto exitCode = process_.exitCode(kLongestRun);
  EXPECT_TRUE(exitCode) << "did not end";
  return {exitCode.value_or(-1), output(), files_.read("errors")};
}

ProgramResult runProgram(std::string_view name, const std::vector<std::string>& arguments,
                         std::string_view input) {
  return RunningProgram(name, arguments, input).wait();
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
