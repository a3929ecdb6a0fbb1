#include "tools/backend/RequestLine.h"

#include <map>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/UTF8.h"

namespace backend {
namespace {

using QXPlatform::Dictionary;
using QXPlatform::replacingInvalidUTF8;
using QXPlatform::Value;

Dictionary headerFields(const std::vector<Header>& headers) {
  std::map<std::string, std::string> joined;
  for (const auto& [name, value] : headers) {
    std::string& field = joined[replacingInvalidUTF8(name)];
    if (!field.empty()) field += ", ";
    field += replacingInvalidUTF8(value);
  }
  return Dictionary::fromEntries({joined.begin(), joined.end()});
}

Value bodyValue(const std::string& body) {
  if (body.empty()) return nullptr;
  if (auto parsed = QXPlatform::parseJSON(body)) return *std::move(parsed);
  return replacingInvalidUTF8(body);
}

}  // namespace

std::string requestLine(const Request& request, QXPlatform::JSONStyle style) {
  const Value line = Dictionary{{"method", replacingInvalidUTF8(request.method)},
                                {"path", replacingInvalidUTF8(request.path)},
                                {"headers", headerFields(request.headers)},
                                {"body", bodyValue(request.body)}};
  return QXPlatform::writeJSON(line, style).value();
}

}  // namespace backend
