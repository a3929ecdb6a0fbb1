#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qx {

struct SyntaxProblem {
  std::size_t offset;
  std::string message;
  std::string hint;  // may be empty
};

// What keeps a text from being JSON, in the words of those who write it by hand; nothing when it is JSON.
std::optional<SyntaxProblem> findSyntaxProblem(std::string_view text);

}  // namespace qx
