#include "agent/presentation/Banner.h"

#include <algorithm>
#include <array>

#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/Markup.h"
#include "QXPlatform/foundation/URL.h"
#include "QXPlatform/foundation/UTF8.h"

namespace QXAgent {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Value;

constexpr std::size_t kLongestTitle = 512;
constexpr std::size_t kLongestBody = 4'096;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

std::string_view textAt(const Value& content, std::string_view key) {
  return content[key].string().value_or(std::string_view());
}

// U+FDD0 to U+FDEF, and the last two of each plane.
bool isNoncharacter(std::string_view sequence) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(sequence[i]); };
  if (sequence.size() == 3)
    return (byte(0) == 0xEF && byte(1) == 0xB7 && byte(2) >= 0x90 && byte(2) <= 0xAF) ||
           (byte(0) == 0xEF && byte(1) == 0xBF && byte(2) >= 0xBE);
  return sequence.size() == 4 && (byte(1) & 0x0F) == 0x0F && byte(2) == 0xBF && byte(3) >= 0xBE;
}

bool isControl(std::string_view sequence) {
  const auto first = static_cast<unsigned char>(sequence[0]);
  if (sequence.size() == 1) return (first < 0x20 && first != '\n' && first != '\t') || first == 0x7F;
  return first == 0xC2 && static_cast<unsigned char>(sequence[1]) < 0xA0;
}

Urgency urgencyOf(const Value& content) {
  const auto name = content["userInfo"]["aps"]["interruption-level"].string();
  if (name == "passive") return Urgency::low;
  return name == "critical" || name == "time-sensitive" ? Urgency::critical : Urgency::normal;
}

bool isCarousel(const Value& content) {
  const auto richFeatures = content["userInfo"]["_rf"].dictionary();
  return richFeatures && QXExtensionSDK::PayloadCarouselModelParser::decode(*richFeatures).ok();
}

std::optional<std::filesystem::path> firstImage(const Value& content) {
  for (const Value& attachment : content["attachments"].elements()) {
    const auto url = QXPlatform::URL::parse(textAt(attachment, "url"));
    if (!url || !url->isFileURL()) continue;
    std::filesystem::path file = url->filePath();
    const std::string extension = QXPlatform::lowercased(file.extension().native());
    constexpr std::array kShown{".jpg", ".jpeg", ".png", ".gif"};
    if (std::ranges::find(kShown, extension) != kShown.end()) return file;
  }
  return std::nullopt;
}

// REQUIRES: well-formed UTF-8, not empty.
std::string_view firstCharacter(std::string_view text) {
  const auto continues = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80; };
  std::size_t length = 1;
  while (length < text.size() && continues(text[length])) ++length;
  return text.substr(0, length);
}

}  // namespace

std::string displayText(std::string_view text, std::size_t limit) {
  const std::string wellFormed = QXPlatform::replacingInvalidUTF8(text);
  std::string shown;
  shown.reserve(std::min(wellFormed.size(), limit));
  for (std::string_view rest = wellFormed; !rest.empty();) {
    const std::string_view sequence = firstCharacter(rest);
    rest.remove_prefix(sequence.size());
    if (isControl(sequence)) continue;
    const std::string_view visible = isNoncharacter(sequence) ? kReplacement : sequence;
    if (shown.size() + visible.size() > limit) return shown + "\xE2\x80\xA6";
    shown += visible;
  }
  return shown;
}

Banner makeBanner(const std::string& identifier, const Dictionary& properties, const std::string& appName) {
  const Value content(properties);
  Banner banner;
  banner.identifier = identifier;
  banner.title = displayText(textAt(content, "title"), kLongestTitle);
  if (banner.title.empty()) banner.title = displayText(appName, kLongestTitle);
  banner.subtitle = displayText(textAt(content, "subtitle"), kLongestTitle);
  banner.body = displayText(textAt(content, "body"), kLongestBody);
  banner.image = firstImage(content);
  if (const auto sound = textAt(content, "sound"); !sound.empty())
    banner.sound = displayText(sound, kLongestTitle);
  banner.badge = content["badge"].integer();
  banner.urgency = urgencyOf(content);
  banner.isExpandable = isCarousel(content);
  return banner;
}

Banner plainBanner(const Banner& banner) {
  Banner plain;
  plain.identifier = banner.identifier;
  plain.title = banner.title;
  plain.subtitle = banner.subtitle;
  plain.body = banner.body;
  plain.isPlain = true;
  return plain;
}

std::string bannerBody(const Banner& banner, bool rendersMarkup) {
  std::string body = banner.subtitle;
  if (!banner.subtitle.empty() && !banner.body.empty()) body += '\n';
  body += banner.body;
  return rendersMarkup ? QXPlatform::escapedMarkup(body) : body;
}

}  // namespace QXAgent
