#pragma once

#include <sys/types.h>

#include "QXPlatform/foundation/Value.h"
#include "tests/support/Test.h"

namespace support {

// What a program that has ended left behind.
struct ProgramResult {
  int exitCode = -1;
  std::string output;
  std::string errors;

  // The standard output as one JSON object a line; a line that is none fails the test.
  std::vector<QXPlatform::Dictionary> lines() const;
};

// Runs a program of this build (build/<preset>/bin) to its end, killing it after two minutes.
ProgramResult runProgram(std::string_view name, const std::vector<std::string>& arguments,
                         const std::string& input = {});

// The most resident memory, in kilobytes, that any program run so far has had.
long largestChildMemory();

// Where such a program lies.
std::string programPath(std::string_view name);

}  // namespace support
