#include "tools/qx/carousel/Gallery.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "tools/qx/PushDocument.h"
#include "tools/qx/PushSize.h"
#include "tools/qx/Results.h"
#include "tools/qx/carousel/CarouselPush.h"
#include "tools/qx/carousel/GalleryPage.h"
#include "tools/qx/check/PlacedFindings.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Result;

GalleryPush findingsAlone(const std::string& text, const PushPlace& place) {
  return {.place = place.name, .findings = findPlaced(text, place, PushLimit::apns)};
}

Result<GalleryPush> draw(const CarouselInvocation& invocation, const std::string& text,
                         const PushPlace& place) {
  GalleryPush drawn = findingsAlone(text, place);
  const auto document = PushDocument::parse(text);
  const auto request = carouselRequest(text);
  if (!document || !request) return drawn;
  drawn.content = (*request)["content"].dictionary().value_or(Dictionary());
  drawn.sizes = sizesByKey(document->userInfo());
  drawn.size = pushSize(document->userInfo());
  auto panels = drawGalleryPanels(invocation, *request);
  if (!panels) return panels.error();
  drawn.panels = *std::move(panels);
  return drawn;
}

bool isPush(const GalleryPush& drawn) {
  return !drawn.content.empty();
}

bool write(const std::filesystem::path& file, const std::string& text) {
  return static_cast<bool>((std::ofstream(file, std::ios::binary | std::ios::trunc) << text).flush());
}

// An earlier page stays until this one is whole. What is no file, a pipe for example, is not replaced.
bool replace(const std::string& file, const std::string& page) {
  std::error_code error;
  const auto target = std::filesystem::weakly_canonical(file, error);
  if (error) return false;
  if (std::filesystem::exists(target, error) && !std::filesystem::is_regular_file(target, error))
    return write(target, page);
  std::filesystem::path beside = target;
  beside += ".new";
  if (write(beside, page)) {
    std::filesystem::rename(beside, target, error);
    if (!error) return true;
  }
  std::filesystem::remove(beside, error);
  return false;
}

// Says which is missing.
bool hasEveryImage(const GalleryPush& push) {
  for (const GalleryPanel& panel : push.panels) {
    if (panel.state["imageState"].string() != "failed") continue;
    fail("carousel", push.place + ": failed image: " + panel.state["url"].description());
    return false;
  }
  return true;
}

Dictionary report(const std::string& file, const std::vector<GalleryPush>& pushes) {
  std::int64_t panels = 0;
  std::int64_t pictures = 0;
  std::int64_t errors = 0;
  std::int64_t findings = 0;
  for (const GalleryPush& push : pushes) {
    panels += static_cast<std::int64_t>(push.panels.size());
    for (const GalleryPanel& panel : push.panels)
      pictures += static_cast<std::int64_t>(panel.pictures.size());
    for (const LocatedFinding& located : push.findings) errors += located.finding.isError() ? 1 : 0;
    findings += static_cast<std::int64_t>(push.findings.size());
  }
  return {{"gallery", file},  {"pushes", static_cast<std::int64_t>(pushes.size())},
          {"panels", panels}, {"pictures", pictures},
          {"errors", errors}, {"warnings", findings - errors}};
}

}  // namespace

int runGallery(const CarouselInvocation& invocation) {
  std::vector<GalleryPush> pushes;
  const auto examine = [&](const std::string& text, const PushPlace& place) -> PushReport {
    return [&, place, text] {
      auto drawn = draw(invocation, text, place);
      if (!drawn) return fail("carousel", place.name + ": " + drawn.error().message) == 0;
      if (!isPush(*drawn)) fail("carousel", place.name + ": " + drawn->findings.front().finding.message);
      const bool isGood = isPush(*drawn) && (!invocation.carousel.failOnFailedImage || hasEveryImage(*drawn));
      pushes.push_back(*std::move(drawn));
      return isGood;
    };
  };
  const int exitCode = forEachPush("carousel", {.files = invocation.carousel.files}, examine);
  if (std::ranges::none_of(pushes, isPush)) return exitCode;
  const std::string& file = *invocation.carousel.gallery;
  if (!replace(file, galleryPage(pushes))) return fail("carousel", "cannot write " + file);
  printResult(invocation.simulator, report(file, pushes));
  return exitCode;
}

}  // namespace qx
