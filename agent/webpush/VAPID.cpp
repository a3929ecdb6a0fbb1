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
  const std::string port = endpoint.port();
  return scheme + "://" + host + (isDefaultPort(scheme, port) ? "" : ":" + port);
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
