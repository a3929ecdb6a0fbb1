#include "QXPlatform/network/URLRequest.h"

#include <algorithm>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/network/HeaderField.h"

namespace QXPlatform {
namespace {

// A line break in a value would begin another field.
std::string onOneLine(std::string_view value) {
  std::string line(trimmedHeaderValue(value));
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
  return line;
}

}  // namespace

URLRequest::URLRequest(URL requested, CachePolicy policy, std::chrono::duration<double> timeout)
    : url(std::move(requested)), cachePolicy(policy), timeoutInterval(timeout) {}

void URLRequest::setValueForHTTPHeaderField(std::string_view value, std::string_view field) {
  if (!isHeaderName(field)) return;
  const auto present = std::find_if(headers_.begin(), headers_.end(), [field](const Header& header) {
    return equalsIgnoringCase(header.first, field);
  });
  if (present != headers_.end()) {
    present->second = onOneLine(value);
  } else {
    headers_.emplace_back(field, onOneLine(value));
  }
}

void URLRequest::removeHeadersExcept(std::initializer_list<std::string_view> kept) {
  std::erase_if(headers_, [kept](const Header& header) {
    return std::none_of(kept.begin(), kept.end(),
                        [&header](std::string_view name) { return equalsIgnoringCase(header.first, name); });
  });
}

std::string URLRequest::description() const {
  std::string text = httpMethod + " " + url.withoutSecrets() + " [";
  std::string_view separator;
  for (const auto& [name, value] : headers_) {
    text.append(separator).append(name);
    separator = ", ";
  }
  return text + "] " + (httpBody ? httpBody->description() : "no body");
}

}  // namespace QXPlatform
