#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// What a server answered, without the body.
class URLResponse {
 public:
  explicit URLResponse(URL url) : url_(std::move(url)) {}
  virtual ~URLResponse() = default;

  // After redirects: the one that answered.
  const URL& url() const { return url_; }

 private:
  URL url_;
};

class HTTPURLResponse : public URLResponse {
 public:
  using Header = std::pair<std::string, std::string>;

  HTTPURLResponse(URL url, int statusCode, std::vector<Header> headers)
      : URLResponse(std::move(url)), statusCode_(statusCode), headers_(std::move(headers)) {}

  int statusCode() const { return statusCode_; }
  // The field's value, whatever the letter case of its name.
  std::optional<std::string_view> valueForHTTPHeaderField(std::string_view field) const;

 private:
  int statusCode_;
  std::vector<Header> headers_;
};

}  // namespace QXPlatform
