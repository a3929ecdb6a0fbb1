#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/DecodingError.h"
#include "QXPlatform/foundation/Value.h"

namespace qx {

// What to write instead; empty where that cannot be said.

// Of a member that does not decode. `found`: what stands there.
std::string hintFor(const QXPlatform::DecodingError& error, const QXPlatform::Value& found);
// Of what stands where text is expected.
std::string hintForText(const QXPlatform::Value& found);
// Of a text that is none of those that there are, as the error's message names them.
std::string hintForChoice(std::string_view message);
// Of what stands where an integer is expected.
std::string hintForInteger(const QXPlatform::Value& found);
// Of a key that is not read: the one of `known` that is meant.
std::string hintForKey(std::string_view written, const std::vector<std::string_view>& known);
// Of a text that is no colour.
std::string hintForColor(std::string_view written);

}  // namespace qx
