#include <algorithm>

#include "QXExtensionSDK/decoration/MediaURLExtractable.h"

namespace QXExtensionSDK {

using QXPlatform::Value;

std::optional<QXPlatform::URL> CarouselMediaURLExtractor::mediaURL(
    const QXPlatform::Dictionary& richFeatures) const {
  const auto panels = richFeatures["vt"]["it"].elements();
  // A list with anything but panels in it is no panel list at all.
  if (panels.empty() || !std::ranges::all_of(panels, &Value::isDictionary)) return std::nullopt;
  const auto text = panels.front()["md"]["ul"].string();
  return text ? QXPlatform::URL::parse(*text) : std::nullopt;
}

}  // namespace QXExtensionSDK
