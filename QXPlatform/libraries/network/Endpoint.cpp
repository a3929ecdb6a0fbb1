#include "QXPlatform/libraries/network/Endpoint.h"

#include <arpa/inet.h>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/Bundle.h"
#include "QXPlatform/libraries/network/CurlHandles.h"
#include "QXPlatform/network/URLRefusal.h"

namespace QXPlatform {
namespace {

std::optional<std::string> part(CURLU* url, CURLUPart which) {
  char* text = nullptr;
  if (curl_url_get(url, which, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) return std::nullopt;
  const CurlText owner(text);
  return lowercased(std::string_view(text));
}

bool bundleAllowsArbitraryLoads() {
  const Value& security = Bundle::main().objectForInfoDictionaryKey("NSAppTransportSecurity");
  return security["NSAllowsArbitraryLoads"].boolean().value_or(false);
}

}  // namespace

std::optional<Endpoint> Endpoint::of(const URL& url) {
  const URLHandle parsed(curl_url());
  if (!parsed) return std::nullopt;
  const unsigned flags = CURLU_NON_SUPPORT_SCHEME;
  if (curl_url_set(parsed.get(), CURLUPART_URL, url.absoluteString().c_str(), flags) != CURLUE_OK) {
    return std::nullopt;
  }
  auto scheme = part(parsed.get(), CURLUPART_SCHEME);
  auto host = part(parsed.get(), CURLUPART_HOST);
  auto port = part(parsed.get(), CURLUPART_PORT);
  if (!scheme || !host || host->empty() || !port) return std::nullopt;
  return Endpoint{*std::move(scheme), *std::move(host), *std::move(port)};
}

bool Endpoint::isLoopback() const {
  if (host == "localhost") return true;
  in_addr v4{};
  if (inet_pton(AF_INET, host.c_str(), &v4) == 1) return (ntohl(v4.s_addr) >> 24) == 127;
  if (host.size() < 2 || host.front() != '[') return false;
  in6_addr v6{};
  return inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), &v6) == 1 && IN6_IS_ADDR_LOOPBACK(&v6);
}

std::optional<URLError> refusal(const URL& url) {
  return refusal(url, Endpoint::of(url));
}

std::optional<URLError> refusal(const URL& url, const std::optional<Endpoint>& endpoint) {
  // The library would take the first segment of the path for a missing host.
  if (!endpoint || url.host().empty() || (endpoint->scheme != "https" && endpoint->scheme != "http")) {
    return URLError{URLError::Code::unsupportedURL,
                    "no address that can be loaded, scheme \"" + url.scheme() + "\""};
  }
  if (endpoint->scheme == "https" || endpoint->isLoopback() || bundleAllowsArbitraryLoads())
    return std::nullopt;
  return URLError{URLError::Code::insecureConnection, endpoint->host + ": plain http is not allowed"};
}

}  // namespace QXPlatform
