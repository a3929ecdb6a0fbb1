#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/Result.h"

namespace qx {

// What became of one push, as test reports have it.
struct TestCase {
  std::string name;
  double seconds = 0;
  std::optional<std::string> error = {};   // it was no push
  std::vector<std::string> failures = {};  // it was one, and failed
};

// Writes a JUnit report of one suite.
std::optional<QXPlatform::Error> writeJUnit(const std::string& file, std::string_view suite,
                                            const std::vector<TestCase>& cases);

}  // namespace qx
