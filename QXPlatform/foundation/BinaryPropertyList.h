#pragma once

#include <cstddef>
#include <string_view>

namespace QXPlatform {

struct PropertyListLimits {
  int depth;
  std::size_t nodes;
  std::size_t bytes;  // of text and data
};

// True when every container of a binary property list refers to objects that exist, and the tree that the
// references unfold to keeps to the limits. A few hundred bytes of shared references can unfold to billions
// of nodes, and the library finds out by building them: such a file takes all the memory there is.
bool unfoldsWithin(std::string_view binaryPropertyList, const PropertyListLimits& limits);

}  // namespace QXPlatform
