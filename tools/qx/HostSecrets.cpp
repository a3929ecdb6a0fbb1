#include "tools/qx/HostSecrets.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/URL.h"

namespace qx {

namespace {

// The first characters of the text, or all of it when it has no more. REQUIRES: well-formed UTF-8.
std::string_view firstCharacters(std::string_view text, int count) {
  const auto beginsCharacter = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; };
  const auto* end =
      std::ranges::find_if(text, [&](char byte) { return beginsCharacter(byte) && count-- == 0; });
  return {text.begin(), end};
}

// Enough of a token to tell two apart; nothing of one that is short.
std::string shortened(std::string_view token) {
  const bool isLong = firstCharacters(token, 8).size() < token.size();
  return std::string(firstCharacters(token, isLong ? 4 : 0)).append("…");
}

// `https://…@host/`.
std::string withoutUserInfo(std::string_view text) {
  const auto url = QXPlatform::URL::parse(text);
  if (url && !url->host().empty()) {
    const std::string& whole = url->absoluteString();
    const std::string_view secret = url->userInfo();
    const auto start = static_cast<std::size_t>(secret.data() - whole.data());
    return secret.empty() ? whole : std::string(whole).replace(start, secret.size(), "…");
  }
  // What is no URL may hold a bare slash in its password.
  const std::size_t at = text.rfind('@');
  if (at == std::string_view::npos) return std::string(text);
  const std::size_t slashes = text.find("//");
  const std::size_t start = slashes > at ? 0 : slashes + 2;
  return std::string(text.substr(0, start)).append("…").append(text.substr(at));
}

QXPlatform::Dictionary replacing(const QXPlatform::Dictionary& record, std::string_view key,
                                 std::string (*replacement)(std::string_view)) {
  const auto text = record[key].string();
  return text ? record.setting(key, replacement(*text)) : record;
}

}  // namespace

QXPlatform::Dictionary hidingSecrets(const QXPlatform::Dictionary& record) {
  auto shown = replacing(record, "baseUrl", withoutUserInfo);
  for (const auto* token : {"accessToken", "subscriberToken"}) shown = replacing(shown, token, shortened);
  return shown;
}

}  // namespace qx
