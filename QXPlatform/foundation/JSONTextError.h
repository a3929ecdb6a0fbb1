#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace QXPlatform {

// What keeps a text from being JSON, and where: the offset of the first byte that does not fit, or of the
// literal that it is part of.
struct JSONTextError {
  std::string reason;
  std::size_t offset;
};

// For those who show a text to its writer; parseJSON() says the same in words. Nothing for JSON. Any thread.
std::optional<JSONTextError> findJSONTextError(std::string_view text);

}  // namespace QXPlatform
