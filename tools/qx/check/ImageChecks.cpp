#include "tools/qx/check/ImageChecks.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "QXExtensionSDK/decoration/MediaURLExtractable.h"
#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/URL.h"
#include "QXPlatform/network/URLRefusal.h"
#include "QXPlatform/notifications/UNNotificationAttachment.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

using QXPlatform::URL;
using QXPlatform::Value;

// Names of what is often taken for an image and is shown by no device.
constexpr auto kNoImages = std::to_array<std::string_view>(
    {".svg", ".svgz", ".pdf", ".eps", ".ai",  ".psd", ".heic", ".heif", ".tif", ".tiff", ".ico", ".jxl",
     ".jp2", ".j2k",  ".tga", ".dng", ".raw", ".mp4", ".m4v",  ".mov",  ".avi", ".webm", ".htm", ".html"});

// What is no port is written with digits all the same.
bool canBeConnectedTo(const std::string& port) {
  constexpr unsigned kMostPort = 65'535;
  unsigned number = 0;
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  return port.empty() || (error == std::errc() && number > 0 && number <= kMostPort);
}

// Why the image is never loaded; nothing when a device tries.
std::optional<std::string> whyNotLoaded(std::string_view text) {
  const auto url = URL::parse(text);
  if (!url) return "no URL: the image is not loaded";
  const std::string scheme = url->scheme();
  if (scheme != "https" && scheme != "http") return "neither https nor http: the image is not loaded";
  if (url->host().empty()) return "a URL without a host: the image is not loaded";
  if (!canBeConnectedTo(url->port())) return "no port " + url->port() + ": the image is not loaded";
  const auto refused = QXPlatform::refusal(*url);
  if (!refused) return std::nullopt;
  if (refused->code == QXPlatform::URLError::Code::insecureConnection) {
    return "plain http: the image is not loaded unless the host allows arbitrary loads";
  }
  return "no host " + url->host() + ": the image is not loaded";
}

std::optional<std::string> whyNotShown(std::string_view text) {
  const auto url = URL::parse(text);
  if (!url) return std::nullopt;
  const std::string extension =
      QXPlatform::lowercased(std::filesystem::path(url->lastPathComponent()).extension().native());
  if (std::ranges::find(kNoImages, extension) == kNoImages.end()) return std::nullopt;
  return "a " + extension + " is no image that a device shows";
}

}  // namespace

void checkImages(const Value& richFeatures, Findings& findings) {
  const Value* panels = findPanels(richFeatures);
  if (panels == nullptr) return;
  for (std::size_t i = 0; i < panels->elements().size(); ++i) {
    const auto text = panels->elements()[i]["md"]["ul"].string();
    if (!text) continue;
    auto reason = whyNotLoaded(*text);
    if (!reason) reason = whyNotShown(*text);
    if (reason) findings.warn(panelPlace(i) + "/md/ul", *std::move(reason));
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
