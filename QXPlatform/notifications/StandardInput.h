#pragma once

#include <iosfwd>

namespace QXPlatform {

// The process's standard input, for one thread at a time. Fast, where std::cin is only once it and all other
// standard streams, of which a host's threads may be making use, have lost their locks.
std::istream& standardInput();

}  // namespace QXPlatform
