#include "tools/backend/RequestLine.h"

#include <map>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/UTF8.h"

namespace backend {
namespace {

using QXPlatform::Dictionary;
using QXPlatform::Value;

std::string readable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = QXPlatform::leadingUTF8Length(text);
    result += length == 0 ? std::string_view("\xEF\xBF\xBD") : text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

Dictionary headerFields(const std::vector<Header>& headers) {
  std::map<std::string, std::string> joined;
  for (const auto& [name, value] : headers) {
    std::string& field = joined[readable(name)];
    if (!field.empty()) field += ", ";
    field += readable(value);
  }
  return Dictionary::fromEntries({joined.begin(), joined.end()});
}

Value bodyValue(const std::string& body) {
  if (body.empty()) return nullptr;
  if (auto parsed = QXPlatform::parseJSON(body)) return *std::move(parsed);
  return readable(body);
}

}  // namespace

std::string requestLine(const Request& request, QXPlatform::JSONStyle style) {
  const Value line = Dictionary{{"method", readable(request.method)},
                                {"path", readable(request.path)},
                                {"headers", headerFields(request.headers)},
                                {"body", bodyValue(request.body)}};
  return QXPlatform::writeJSON(line, style).value();
}

}  // namespace backend
