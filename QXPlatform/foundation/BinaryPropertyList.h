#pragma once

#include <cstddef>
#include <string_view>

namespace QXPlatform {

struct PropertyListLimits {
  int depth;
  std::size_t nodes;
  std::size_t bytes;  // of text and data
};

// True when every container of a binary property list refers to objects that exist, every key is text without
// a NUL, and the tree that the references unfold to keeps to the limits. A few hundred bytes of shared
// references can unfold to billions of nodes, and no reader should find out by building them.
bool unfoldsWithin(std::string_view binaryPropertyList, const PropertyListLimits& limits);

}  // namespace QXPlatform
