#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

// Where something stands in a text; both count from 1, the column in characters.
struct SourcePosition {
  std::size_t line = 1;
  std::size_t column = 1;
};

SourcePosition positionOf(std::string_view text, std::size_t offset);

// The offset of the value that a JSON pointer leads to; of the nearest value around it when there is none.
// REQUIRES: the text is JSON.
std::size_t offsetOf(std::string_view text, std::string_view pointer);

// A member of an object that one of the same key follows, which takes its place.
struct ReplacedMember {
  std::string pointer;
  std::size_t offset;  // of its value
};

// In the order of the text. REQUIRES: the text is JSON.
std::vector<ReplacedMember> findReplacedMembers(std::string_view text);

// What a reader is shown of the line that holds an offset; a compact push is one long line.
struct Excerpt {
  std::string text;
  std::size_t column = 0;  // of the offset, from 0, as a terminal counts
};

Excerpt excerptAround(std::string_view text, std::size_t offset);

}  // namespace qx
