#include "tools/qx/check/ImageChecks.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "QXExtensionSDK/decoration/MediaURLExtractable.h"
#include "QXPlatform/foundation/URL.h"
#include "QXPlatform/libraries/network/Endpoint.h"
#include "QXPlatform/notifications/UNNotificationAttachment.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

using QXPlatform::URL;
using QXPlatform::Value;

// Why the image is never loaded; nothing when a device tries.
std::optional<std::string> whyNotLoaded(std::string_view text) {
  const auto url = URL::parse(text);
  if (!url) return "no URL: the image is not loaded";
  const auto refused = QXPlatform::refusal(*url);
  if (!refused) return std::nullopt;
  if (refused->code == QXPlatform::URLError::Code::insecureConnection) {
    return "plain http: the image is not loaded unless the host allows arbitrary loads";
  }
  return "neither https nor http: the image is not loaded";
}

}  // namespace

void checkImages(const Value& richFeatures, Findings& findings) {
  const Value* panels = findPanels(richFeatures);
  if (panels == nullptr) return;
  for (std::size_t i = 0; i < panels->elements().size(); ++i) {
    const auto text = panels->elements()[i]["md"]["ul"].string();
    const auto reason = text ? whyNotLoaded(*text) : std::nullopt;
    if (reason) findings.warn(panelPlace(i) + "/md/ul", *reason);
  }
}

void checkThumbnail(const Value& richFeatures, Findings& findings) {
  const auto dictionary = richFeatures.dictionary();
  const auto url =
      dictionary ? QXExtensionSDK::CarouselMediaURLExtractor().mediaURL(*dictionary) : std::nullopt;
  if (!url || QXPlatform::UNNotificationAttachment::showsTypeOf(url->lastPathComponent())) return;
  findings.warn("/_rf/vt/it/0/md/ul",
                "no thumbnail: the file name ends in none of .png, .jpg, .jpeg and .gif");
}

}  // namespace qx
