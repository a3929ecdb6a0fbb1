#pragma once

#include <cstdint>
#include <string>

#include "tools/qx/SimulatorOptions.h"

namespace qx {

struct ContextEncodeOptions {
  std::int64_t source = 0;  // bit sets of raw values
  std::int64_t destinations = 0;
  std::string businessUnit;  // empty for none
};

// The push context as the text of "_co", and back. Each prints its result and returns the exit code.
int runContextEncode(const SimulatorOptions& simulator, const ContextEncodeOptions& options);
int runContextDecode(const SimulatorOptions& simulator, const std::string& text);

}  // namespace qx
