#include "agent/webpush/VAPID.h"

#include <cstdint>

#include "QXPlatform/foundation/Value.h"
#include "agent/webpush/Base64URL.h"
#include "agent/webpush/P256.h"

namespace QXAgent {

using QXPlatform::Dictionary;

namespace {

bool isDefaultPort(const std::string& scheme, std::string_view port) {
  return port.empty() || (scheme == "https" && port == "443") || (scheme == "http" && port == "80");
}

}  // namespace

QXPlatform::Data makeVAPIDKey() {
  return privateKeyBytes(makeP256Key());
}

std::string vapidAudience(const QXPlatform::URL& endpoint) {
  const std::string scheme = endpoint.scheme();
  std::string host = endpoint.host();
  if (host.find(':') != std::string::npos) host = "[" + host + "]";
  std::string_view authority = endpoint.absoluteString();
  authority.remove_prefix(scheme.size() + std::string_view("://").size());
  authority = authority.substr(0, authority.find_first_of("/?#"));
  const std::size_t colon = authority.find_last_of(":@]");
  const bool hasPort = colon != std::string_view::npos && authority[colon] == ':';
  const std::string_view port = hasPort ? authority.substr(colon + 1) : std::string_view();
  return scheme + "://" + host + (isDefaultPort(scheme, port) ? "" : ":" + std::string(port));
}

QXPlatform::Result<std::string> vapidAuthorization(std::string_view privateKey, const VAPIDClaims& claims) {
  const P256Key key = p256PrivateKey(privateKey);
  if (!key) return QXPlatform::Error{"the private key is none of P-256"};
  const Dictionary header{{"typ", "JWT"}, {"alg", "ES256"}};
  const Dictionary body{{"aud", claims.audience},
                        {"exp", std::int64_t{claims.expiry.time_since_epoch().count()}},
                        {"sub", claims.subject}};
  const std::string text = encodeBase64URL(header.description()) + "." + encodeBase64URL(body.description());
  return "vapid t=" + text + "." + encodeBase64URL(p256Signature(key, text)) +
         ", k=" + encodeBase64URL(publicKeyBytes(key).view());
}

}  // namespace QXAgent
