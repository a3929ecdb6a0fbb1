#include <algorithm>

#include "QXExtensionSDK/decoration/MediaURLExtractable.h"

namespace QXExtensionSDK {

using QXPlatform::Value;

std::optional<QXPlatform::URL> CarouselMediaURLExtractor::mediaURL(
    const QXPlatform::Dictionary& richFeatures) const {
  const Value* viewTemplate = richFeatures.find("vt");
  const Value* items = viewTemplate != nullptr ? viewTemplate->find("it") : nullptr;
  if (items == nullptr) return std::nullopt;
  const auto panels = items->elements();
  // A list with anything but panels in it is no panel list at all.
  if (panels.empty() || !std::ranges::all_of(panels, &Value::isDictionary)) return std::nullopt;
  const Value* media = panels.front().find("md");
  const Value* url = media != nullptr ? media->find("ul") : nullptr;
  const auto text = url != nullptr ? url->string() : std::nullopt;
  return text ? QXPlatform::URL::parse(*text) : std::nullopt;
}

}  // namespace QXExtensionSDK
