#include "QXPlatform/foundation/CommandLine.h"

#include <getopt.h>

#include <cstddef>

namespace QXPlatform {

bool readCommandLine(int argc, const char* const* argv, const std::vector<CommandLineOption>& options) {
  std::vector<option> known;
  known.reserve(options.size() + 1);
  for (const CommandLineOption& each : options)
    known.push_back({each.name, each.takesValue ? required_argument : no_argument, nullptr, 0});
  known.push_back({});
  optind = 1;
  opterr = 0;
  // By the "+" the arguments stay in their order, so none is written to.
  int which = 0;
  int found = 0;
  while ((found = getopt_long(argc, const_cast<char* const*>(argv), "+", known.data(), &which)) == 0) {
    if (!options[static_cast<std::size_t>(which)].take(optarg)) return false;
  }
  return found == -1 && optind >= argc;
}

}  // namespace QXPlatform
