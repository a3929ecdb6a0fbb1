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

// `https://…@host/`. What is no URL may hold a bare slash in its password.
std::string withoutUserInfo(std::string_view url) {
  const std::size_t slashes = url.find("//");
  const std::size_t authority = slashes == std::string_view::npos ? 0 : slashes + 2;
  const bool wellFormed = QXPlatform::URL::parse(url).has_value();
  const std::size_t end = wellFormed ? url.find_first_of("/?#", authority) : std::string_view::npos;
  const std::size_t at = url.substr(0, end).rfind('@');
  if (at == std::string_view::npos || at < authority) return std::string(url);
  return std::string(url.substr(0, authority)).append("…").append(url.substr(at));
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
