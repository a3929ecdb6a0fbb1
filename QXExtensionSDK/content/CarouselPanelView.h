#pragma once

#include <QColor>
#include <QRegion>
#include <QWidget>
#include <cstdint>
#include <memory>

#include "QXExtensionSDK/content/CarouselImageView.h"
#include "QXExtensionSDK/content/CarouselViewModel.h"
#include "QXPlatform/ui/RoundedRect.h"

namespace QXExtensionSDK {

// The heights of the places for the texts; 0 for a text that no panel has.
struct PanelTextLayout {
  int titleHeight = 0;
  int subTitleHeight = 0;

  friend bool operator==(const PanelTextLayout&, const PanelTextLayout&) = default;
};

// One panel of the carousel: a card with the image and, under it, title and subtitle. Main thread.
class CarouselPanelView final : public QWidget {
 public:
  // The delegate must outlive the view.
  CarouselPanelView(std::shared_ptr<QXPlatform::URLSession> session, CarouselImageViewDelegate& delegate,
                    const Logger& logger, QWidget* parent);

  void setFrame(const QRect& frame);
  // Shows the panel, and sees to its image.
  void configure(const PanelItemComponent& viewModel, std::int64_t panelIndex);

  CarouselImageView& imageView() { return *imageView_; }
  const CarouselImageView& imageView() const { return *imageView_; }

  // What the panels of a carousel share so that each of them fits.
  static PanelTextLayout textLayoutForPanels(const PanelItemComponents& panels, int width);
  static int heightForPanels(const PanelTextLayout& layout, int width);
  void setTextLayout(const PanelTextLayout& layout);

  // Where nothing of its parent is to be seen, drawn by such a painter.
  QRegion opaqueRegion(const QPainter& painter) const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void layoutSubviews();
  QXPlatform::FramedRoundedRect card() const;

  QColor panelColor_;
  PanelTextLayout textLayout_;
  CarouselImageView* imageView_;
  QXPlatform::UILabel* titleLabel_;
  QXPlatform::UILabel* subTitleLabel_;
};

}  // namespace QXExtensionSDK
