#include "tools/backend/HTTPMessages.h"

#include <algorithm>

#include "QXPlatform/foundation/ASCII.h"

namespace backend {

std::optional<std::string_view> Request::header(std::string_view name) const {
  const auto found = std::find_if(headers.begin(), headers.end(), [name](const Header& header) {
    return QXPlatform::equalsIgnoringCase(header.first, name);
  });
  if (found == headers.end()) return std::nullopt;
  return found->second;
}

Response Response::redirect(int status, std::string location) {
  Response response;
  response.status = status;
  response.headers.emplace_back("Location", std::move(location));
  return response;
}

}  // namespace backend
