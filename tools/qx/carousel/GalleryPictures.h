#pragma once

#include <QByteArray>
#include <vector>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/qx/CarouselOptions.h"

namespace qx {

// How a panel is looked at.
struct GalleryLook {
  int width;  // points
  bool isDark;
  bool isRightToLeft;
  int textPercent;
};

struct GalleryPicture {
  GalleryLook look;
  int height = 0;    // points
  QByteArray image;  // WebP
};

struct GalleryPanel {
  QXPlatform::Dictionary state;  // as the carousel reports the panel
  std::vector<GalleryPicture> pictures;
};

// Draws a push, a full request, in every look that a gallery shows. No panels: the push collapses.
QXPlatform::Result<std::vector<GalleryPanel>> drawGalleryPanels(const CarouselInvocation& invocation,
                                                                const QXPlatform::Dictionary& request);

}  // namespace qx
