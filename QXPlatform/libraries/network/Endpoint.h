#pragma once

#include <optional>
#include <string>

#include "QXPlatform/network/URLSession.h"

namespace QXPlatform {

// Where a URL leads, read by the parser of the library that connects, so that what is judged here is what is
// connected to. Two URLs with equal endpoints have one origin.
struct Endpoint {
  std::string scheme;  // in lower case
  std::string host;    // in lower case; an IPv6 address in brackets
  std::string port;    // the scheme's own when the URL has none

  static std::optional<Endpoint> of(const URL& url);

  // localhost, 127.0.0.0/8 and ::1, as written: no name is looked up.
  bool isLoopback() const;

  friend bool operator==(const Endpoint&, const Endpoint&) = default;
};

// As refusal(url), for one whose endpoint is known.
std::optional<URLError> refusal(const URL& url, const std::optional<Endpoint>& endpoint);

}  // namespace QXPlatform
