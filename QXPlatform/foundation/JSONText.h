#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/JSONPointer.h"
#include "QXPlatform/foundation/Value.h"

namespace QXPlatform {

// Why something cannot be written as JSON, and where it stands.
struct JSONFault {
  JSONPointer where;
  std::string_view reason;

  // "/pnData/0/eventDateUtc: not a finite number"
  std::string description() const;
};

// The pieces that JSON text is put together from, appended to `out`. False: `fault` says why, and what `out`
// has gained is of no use.
bool appendJSONText(std::string& out, std::string_view text, JSONFault& fault);
bool appendJSONNumber(std::string& out, double number, JSONFault& fault);
bool appendJSONValue(std::string& out, const Value& value, JSONFault& fault);
void appendJSONInteger(std::string& out, std::int64_t integer);

// Makes room for `count` elements of which the first has been written at `start`, on the guess that they are
// alike; for no more than what a wrong guess may take.
inline void reserveAlike(std::string& out, std::size_t start, std::size_t count) {
  constexpr std::size_t kMost = std::size_t{64} << 10;
  const std::size_t first = out.size() - start;
  out.reserve(start + std::min((first + first / 8) * count, first + kMost));
}

// Never fails: what JSON cannot hold is shown all the same, in words (Value::description()).
void appendJSONOrDescription(std::string& out, const Value& value, JSONStyle style);

}  // namespace QXPlatform
