#include "tools/backend/RequestLine.h"

#include <map>
#include <utility>
#include <vector>

namespace backend {
namespace {

using platform::Dictionary;
using platform::Value;

// The length of the well-formed UTF-8 sequence that the text begins with; 0 when there is none.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                             : lead >= 0xE0 && lead <= 0xEF ? 3
                             : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                            : 0;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
  const bool surrogate = lead == 0xED && byte(1) > 0x9F;
  const bool beyond = lead == 0xF4 && byte(1) > 0x8F;
  return overlong || surrogate || beyond ? 0 : length;
}

std::string readable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
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
  return Dictionary(std::vector<std::pair<std::string, Value>>(joined.begin(), joined.end()));
}

Value bodyValue(const std::string& body) {
  if (body.empty()) return nullptr;
  if (auto parsed = platform::parseJSON(body)) return *std::move(parsed);
  return readable(body);
}

}  // namespace

std::string requestLine(const Request& request, platform::JSONStyle style) {
  const Value line = Dictionary{{"method", readable(request.method)},
                                {"path", readable(request.path)},
                                {"headers", headerFields(request.headers)},
                                {"body", bodyValue(request.body)}};
  return platform::writeJSON(line, style).value();
}

}  // namespace backend
