#include "tools/qx/carousel/GalleryPictures.h"

#include <QFile>
#include <QTemporaryDir>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "tools/qx/carousel/PanelDrawing.h"
#include "tools/qx/carousel/PlayedCarousel.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;
using Panels = std::vector<GalleryPanel>;

constexpr std::array kWidths{430, 320};
constexpr int kOrdinaryText = 100;
constexpr int kLargeText = 200;

struct Variant {
  bool isRightToLeft;
  int textPercent;
};
constexpr std::array kVariants{Variant{false, kOrdinaryText}, Variant{true, kOrdinaryText},
                               Variant{false, kLargeText}};

Result<Dictionary> take(PlayedCarousel& carousel, const GalleryLook& look) {
  return carousel.play({{"step", "look"},
                        {"dark", look.isDark},
                        {"rightToLeft", look.isRightToLeft},
                        {"textScale", look.textPercent / 100.0}});
}

// All panels in one look.
std::optional<Error> drawPanels(PlayedCarousel& carousel, const GalleryLook& look, const Dictionary& request,
                                Panels& panels) {
  const QTemporaryDir directory;
  const QString file = directory.filePath("panel.webp");
  if (const auto looking = take(carousel, look); !looking) return looking.error();
  const auto loaded = carousel.play({{"step", "load"}, {"request", request}});
  if (!loaded) return loaded.error();
  const std::size_t count = (*loaded)["panels"].elements().size();
  panels.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto state = drawPanel(carousel, i, file.toStdString());
    if (!state) return state.error();
    QFile drawn(file);
    if (!drawn.open(QIODevice::ReadOnly)) return Error{"cannot read " + file.toStdString()};
    const auto height = (*state)["preferredContentSize"].elements()[1].integer().value_or(0);
    panels[i].state = (*state)["panels"].elements()[i].dictionary().value_or(Dictionary());
    panels[i].pictures.push_back({look, static_cast<int>(height), drawn.readAll()});
  }
  return std::nullopt;
}

}  // namespace

Result<Panels> drawGalleryPanels(const CarouselInvocation& invocation, const Dictionary& request) {
  std::array<std::unique_ptr<PlayedCarousel>, kWidths.size()> carousels;
  for (std::size_t i = 0; i < kWidths.size(); ++i) {
    auto carousel = makeCarousel(invocation, {.width = kWidths[i]}, [](const Dictionary&) {});
    if (!carousel) return carousel.error();
    carousels[i] = *std::move(carousel);
  }
  Panels panels;
  for (const Variant& variant : kVariants) {
    for (std::size_t i = 0; i < kWidths.size(); ++i) {
      for (const bool isDark : {false, true}) {
        const GalleryLook look{kWidths[i], isDark, variant.isRightToLeft, variant.textPercent};
        if (auto refused = drawPanels(*carousels[i], look, request, panels)) return *refused;
      }
    }
  }
  return panels;
}

}  // namespace qx
