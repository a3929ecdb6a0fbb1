#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/URL.h"

namespace QXAgent {

// Who sends, as a push service is told by RFC 8292. Any thread may call.

// The longest that a token may be good for.
inline constexpr std::chrono::hours kLongestVAPIDValidity{24};

// A fresh private key, 32 bytes.
QXPlatform::Data makeVAPIDKey();

// The origin of an endpoint: "https://push.example.net". REQUIRES: the endpoint has a host.
std::string vapidAudience(const QXPlatform::URL& endpoint);

struct VAPIDClaims {
  std::string audience;
  std::string subject;  // whom the push service can write to: "mailto:…" or "https://…"
  std::chrono::sys_seconds expiry;
};

// The value of the field Authorization. Fails for a private key that is none; never names it.
QXPlatform::Result<std::string> vapidAuthorization(std::string_view privateKey, const VAPIDClaims& claims);

}  // namespace QXAgent
