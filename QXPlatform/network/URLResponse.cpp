#include "QXPlatform/network/URLResponse.h"

#include <algorithm>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/network/HeaderField.h"

namespace QXPlatform {

std::optional<std::string_view> HTTPURLResponse::valueForHTTPHeaderField(std::string_view field) const {
  const auto found = std::find_if(headers_.begin(), headers_.end(), [field](const Header& header) {
    return equalsIgnoringCase(header.first, field);
  });
  if (found == headers_.end()) return std::nullopt;
  return found->second;
}

}  // namespace QXPlatform
