#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/Value.h"
#include "tools/qx/carousel/GalleryPictures.h"
#include "tools/qx/check/FindingFormat.h"

namespace qx {

// One push of a gallery.
struct GalleryPush {
  std::string place;  // "pushes.ndjson: line 3"
  std::vector<LocatedFinding> findings;
  QXPlatform::Dictionary content = {};  // of the request; empty for what is no push
  std::vector<std::pair<std::string, std::size_t>> sizes = {};
  std::size_t size = 0;
  std::vector<GalleryPanel> panels = {};
};

// A page that needs nothing beside itself: no script, no other file, no network.
std::string galleryPage(const std::vector<GalleryPush>& pushes);

}  // namespace qx
