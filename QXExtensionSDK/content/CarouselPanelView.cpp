#include "QXExtensionSDK/content/CarouselPanelView.h"

#include <QPainter>
#include <algorithm>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "QXExtensionSDK/content/ViewConversions.h"
#include "QXPlatform/ui/Accessibility.h"

namespace QXExtensionSDK {

namespace {

// The card's corners run in parallel to the image's.
constexpr int kPadding = 8;
constexpr double kCornerRadius = 16 + kPadding;
constexpr int kTextMargin = 16;
constexpr int kTextTop = 12;
constexpr int kTextSpacing = 3;
constexpr int kTextBottom = 16;
constexpr int kTitleLines = 2;
constexpr int kSubTitleLines = 2;

QRect imageRect(int panelWidth) {
  const int width = std::max(1, panelWidth - 2 * kPadding);
  return {kPadding, kPadding, width, std::max(1, qRound(width * 9 / 16.0))};
}

// Of the tallest. Equal texts, which panels often have, are measured once: that is what takes the time.
int textHeight(const PanelItemComponents& panels, std::optional<TextComponent> PanelItemComponent::*text,
               int width, int numberOfLines) {
  std::set<std::tuple<std::string_view, FontStyle, double>> measured;
  int height = 0;
  for (const PanelItemComponent& panel : panels) {
    const auto& component = panel.*text;
    if (!component) continue;
    const Font& font = component->font;
    if (!measured.emplace(component->text, font.style, font.pointSize).second) continue;
    height = std::max(height, QXPlatform::UILabel::heightForText(QString::fromStdString(component->text),
                                                                 toQFont(font), width, numberOfLines));
  }
  return height;
}

int textWidth(int panelWidth) {
  return std::max(0, panelWidth - 2 * kTextMargin);
}

// Below the top of the texts.
int subTitleTop(const PanelTextLayout& layout) {
  const bool hasBoth = layout.titleHeight > 0 && layout.subTitleHeight > 0;
  return layout.titleHeight + (hasBoth ? kTextSpacing : 0);
}

void configureOrHide(QXPlatform::UILabel& label, const std::optional<TextComponent>& component) {
  label.setVisible(component.has_value());
  if (component) configureLabel(label, *component);
}

}  // namespace

CarouselPanelView::CarouselPanelView(std::shared_ptr<QXPlatform::URLSession> session,
                                     CarouselImageViewDelegate& delegate, const Logger& logger,
                                     QWidget* parent)
    : QWidget(parent),
      imageView_(new CarouselImageView(std::move(session), delegate, logger, this)),
      titleLabel_(new QXPlatform::UILabel(kTitleLines, this)),
      subTitleLabel_(new QXPlatform::UILabel(kSubTitleLines, this)) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  // The texts are the name of the button that the panel stands in.
  for (QWidget* label : {titleLabel_, subTitleLabel_}) {
    QXPlatform::setAccessibility(*label, {.role = QAccessible::StaticText, .isElement = false});
  }
}

PanelTextLayout CarouselPanelView::textLayoutForPanels(const PanelItemComponents& panels, int width) {
  return {textHeight(panels, &PanelItemComponent::title, textWidth(width), kTitleLines),
          textHeight(panels, &PanelItemComponent::subTitle, textWidth(width), kSubTitleLines)};
}

int CarouselPanelView::heightForPanels(const PanelTextLayout& layout, int width) {
  const int imageBottom = imageRect(width).bottom() + 1;
  if (layout == PanelTextLayout()) return imageBottom + kPadding;
  return imageBottom + kTextTop + subTitleTop(layout) + layout.subTitleHeight + kTextBottom;
}

void CarouselPanelView::setTextLayout(const PanelTextLayout& layout) {
  if (layout == textLayout_) return;
  textLayout_ = layout;
  layoutSubviews();
}

void CarouselPanelView::configure(const PanelItemComponent& viewModel, std::int64_t panelIndex) {
  panelColor_ = toQColor(viewModel.panelColor);
  configureOrHide(*titleLabel_, viewModel.title);
  configureOrHide(*subTitleLabel_, viewModel.subTitle);
  imageView_->configure(viewModel.media, panelIndex);
  update();
}

void CarouselPanelView::setFrame(const QRect& frame) {
  if (frame == geometry()) return;
  setGeometry(frame);
  layoutSubviews();
}

void CarouselPanelView::layoutSubviews() {
  const QRect image = imageRect(width());
  imageView_->setFrame(image);
  const int top = image.bottom() + 1 + kTextTop;
  titleLabel_->setGeometry(kTextMargin, top, textWidth(width()), textLayout_.titleHeight);
  subTitleLabel_->setGeometry(kTextMargin, top + subTitleTop(textLayout_), textWidth(width()),
                              textLayout_.subTitleHeight);
}

QXPlatform::FramedRoundedRect CarouselPanelView::card() const {
  return {rect(), kCornerRadius, 0};
}

QRegion CarouselPanelView::opaqueRegion(const QPainter& painter) const {
  return card().opaqueRegion(painter).translated(pos());
}

void CarouselPanelView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  card().fill(painter, panelColor_, imageView_->opaqueRegion(painter));
}

}  // namespace QXExtensionSDK
