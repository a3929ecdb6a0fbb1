#include "tools/backend/HTTPMessages.h"

#include <algorithm>

namespace backend {
namespace {

char lowered(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return lowered(a) == lowered(b); });
}

std::optional<std::string_view> Request::header(std::string_view name) const {
  const auto found = std::find_if(headers.begin(), headers.end(), [name](const Header& header) {
    return equalsIgnoringCase(header.first, name);
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
