#include "AppGroupSDK/context/PNContextUtils.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

#include "AppGroupSDK/store/Trimming.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/UTF8.h"

namespace AppGroupSDK {

namespace {

using QXPlatform::Dictionary;

constexpr std::string_view kContextKey = "_co";

PNContextInfo defaultContext() {
  return {PNContextSource::none, {QXPlatform::rawValue(PNContextDestination::none)}, std::nullopt};
}

// The three fields; nothing when there are more or fewer.
std::optional<std::array<std::string_view, 3>> splitFields(std::string_view text) {
  if (std::ranges::count(text, ':') != 2) return std::nullopt;
  const std::size_t first = text.find(':');
  const std::size_t second = text.rfind(':');
  return std::array{text.substr(0, first), text.substr(first + 1, second - first - 1),
                    text.substr(second + 1)};
}

// The bits of a decimal number; none for what is no number or a negative one.
std::int64_t parseBits(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return 0;
  }
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = error == std::errc() && end == text.data() + text.size();
  return isNumber ? std::max<std::int64_t>(number, 0) : 0;
}

PNContextSource makeSource(std::int64_t bits) {
  for (const auto source : rawValues(QXPlatform::RawValuesOf<PNContextSource>())) {
    if ((bits & QXPlatform::rawValue(source)) != 0) return source;
  }
  return PNContextSource::none;
}

std::vector<std::int64_t> makeDestinations(std::int64_t bits) {
  std::vector<std::int64_t> destinations;
  for (const auto destination : rawValues(QXPlatform::RawValuesOf<PNContextDestination>())) {
    const std::int64_t bit = QXPlatform::rawValue(destination);
    if ((bits & bit) != 0) destinations.push_back(bit);
  }
  if (destinations.empty()) destinations.push_back(QXPlatform::rawValue(PNContextDestination::none));
  return destinations;
}

}  // namespace

std::optional<std::string> PNContextUtils::extractContextFieldFromContent(
    const QXPlatform::UNNotificationContent& content) {
  const Dictionary userInfo = content.userInfo();
  const auto field = userInfo[kContextKey].string();
  return field ? std::optional<std::string>(*field) : std::nullopt;
}

PNContextInfo PNContextUtils::parseContextInfoFromContextString(std::string_view text) {
  const auto bytes = QXPlatform::decodeBase64(trimmingWhitespaceAndNewlines(text));
  if (!bytes || !QXPlatform::isValidUTF8(bytes->view())) return defaultContext();
  const auto fields = splitFields(bytes->view());
  if (!fields) return defaultContext();
  const auto& [source, destinations, businessUnitId] = *fields;
  return {makeSource(parseBits(source)), makeDestinations(parseBits(destinations)),
          businessUnitId.empty() ? std::nullopt : std::optional<std::string>(businessUnitId)};
}

PNContextInfo PNContextUtils::parseContextInfoFromUserInfo(const Dictionary& userInfo) {
  const auto field = userInfo[kContextKey].string();
  return field ? parseContextInfoFromContextString(*field) : defaultContext();
}

PNContextInfo PNContextUtils::parseContextInfoFromContent(const QXPlatform::UNNotificationContent& content) {
  return parseContextInfoFromUserInfo(content.userInfo());
}

}  // namespace AppGroupSDK
