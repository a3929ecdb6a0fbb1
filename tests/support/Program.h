#pragma once

#include "QXPlatform/foundation/Value.h"
#include "tests/support/ChildProcess.h"

namespace support {

// What a program that has ended left behind.
struct ProgramResult {
  int exitCode = -1;
  std::string output;
  std::string errors;

  // The standard output as one JSON object a line; a line that is none fails the test.
  std::vector<QXPlatform::Dictionary> lines() const;
};

// A program of this build (build/<preset>/bin), or at a path, that runs; killed, if need be, when this object
// goes.
class RunningProgram {
 public:
  RunningProgram(std::string_view name, const std::vector<std::string>& arguments,
                 std::string_view input = {});

  pid_t id() const { return process_.id(); }
  void kill() { process_.kill(); }
  // What it has printed so far.
  std::string output() const;
  // The next line of it as JSON, waited for; empty when there is none in time.
  QXPlatform::Dictionary nextLine();
  // To its end; killed after two minutes.
  ProgramResult wait();

 private:
  const TemporaryDirectory files_;
  std::size_t linesRead_ = 0;
  ChildProcess process_;
};

// Runs such a program to its end.
ProgramResult runProgram(std::string_view name, const std::vector<std::string>& arguments,
                         std::string_view input = {});

// The most resident memory, in kilobytes, that any program run so far has had.
long largestChildMemory();

// Where such a program lies.
std::string programPath(std::string_view name);

}  // namespace support
