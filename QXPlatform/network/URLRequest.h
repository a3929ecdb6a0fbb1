#pragma once

#include <chrono>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

enum class CachePolicy : int { useProtocolCachePolicy = 0 };

// One HTTP request. A plain value.
class URLRequest {
 public:
  using Header = std::pair<std::string, std::string>;

  explicit URLRequest(URL url, CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy,
                      std::chrono::duration<double> timeoutInterval = std::chrono::seconds(60));

  URL url;
  CachePolicy cachePolicy;
  // The longest time without progress; the session's own limit counts too, the shorter governs.
  std::chrono::duration<double> timeoutInterval;
  std::string httpMethod = "GET";
  std::optional<Data> httpBody;

  // Replaces a field of the same name, whatever its letter case. Line breaks in the value become spaces; a
  // name that no header section can hold is ignored.
  void setValueForHTTPHeaderField(std::string_view value, std::string_view field);
  void removeHeadersExcept(std::initializer_list<std::string_view> kept);
  const std::vector<Header>& headers() const { return headers_; }

  // Method, URL without credentials and query, header names and body size: never a header's value.
  std::string description() const;

 private:
  std::vector<Header> headers_;
};

}  // namespace QXPlatform
