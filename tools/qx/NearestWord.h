#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

// The known word that somebody meant who wrote another; nothing when none is near.
std::optional<std::string> nearestWord(std::string_view written, const std::vector<std::string>& known);

}  // namespace qx
