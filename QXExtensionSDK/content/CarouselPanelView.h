#pragma once

#include <QColor>
#include <QWidget>
#include <cstdint>
#include <memory>

#include "QXExtensionSDK/content/CarouselImageView.h"
#include "QXExtensionSDK/content/CarouselViewModel.h"

namespace QXExtensionSDK {

// One panel of the carousel: a card with the image and, under it, title and subtitle. Main thread.
class CarouselPanelView final : public QWidget {
 public:
  // The delegate must outlive the view.
  CarouselPanelView(std::shared_ptr<platform::URLSession> session, CarouselImageViewDelegate& delegate,
                    const Logger& logger, QWidget* parent);

  void setFrame(const QRect& frame);
  // Shows the panel, and sees to its image.
  void configure(const PanelItemComponent& viewModel, std::int64_t panelIndex);

  CarouselImageView& imageView() { return *imageView_; }
  const CarouselImageView& imageView() const { return *imageView_; }

  // What the panels of a carousel need so that each of them fits.
  static int heightForPanels(const PanelItemComponents& panels, int width);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void layoutSubviews();

  QColor panelColor_;
  CarouselImageView* imageView_;
  platform::UILabel* titleLabel_;
  platform::UILabel* subTitleLabel_;
};

}  // namespace QXExtensionSDK
