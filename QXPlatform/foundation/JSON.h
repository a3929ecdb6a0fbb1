#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"

namespace QXPlatform {

enum class JSONStyle {
  compact,  // no white space
  pretty,   // two spaces a level, "key" : value
};

// How deep arrays and dictionaries may nest.
inline constexpr int kJSONDepthLimit = 512;
// The writer goes a little deeper, so that what has been read can be shown inside something else.
inline constexpr int kJSONWritingDepthLimit = kJSONDepthLimit + 8;

// How much memory the tree of one text may take, the reader's own included; what an extension can spare. The
// tree of an ordinary text is three to five times its size, that of the most wasteful one thirty times.
inline constexpr std::size_t kJSONTreeLimit = std::size_t{16} << 20;

// What a text may take.
struct JSONLimits {
  int depth = kJSONDepthLimit;  // kJSONWritingDepthLimit at most
  std::size_t treeBytes = kJSONTreeLimit;
};

// Reads one JSON text, strictly by RFC 8259: invalid UTF-8, byte order marks, lone surrogates, text after the
// end, numbers beyond a double, too deep a nesting and a tree beyond the limit are errors. An integer beyond
// 64 bits becomes a double; of equal keys the last counts. An error says where it was met. Any thread.
Result<Value> parseJSON(std::string_view text, JSONLimits limits = {});

// Writes a value whose every leaf JSON can hold; a Date, Data, a number that is not finite, text that is not
// UTF-8 or too deep a nesting is an error that says where. Doubles are written so that they read back to the
// last bit. Any thread.
Result<std::string> writeJSON(const Value& value, JSONStyle style);

// True when writeJSON() would succeed and the value is a dictionary or an array.
bool isValidJSONObject(const Value& value);

}  // namespace QXPlatform
