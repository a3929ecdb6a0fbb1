#include "QXExtensionSDK/content/CarouselPanelView.h"

#include <QPainter>
#include <algorithm>
#include <utility>

#include "QXExtensionSDK/content/ViewConversions.h"
#include "platform/ui/Appearance.h"

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

int textHeight(const std::optional<TextComponent>& text, int width, int numberOfLines) {
  if (!text) return 0;
  return platform::UILabel::heightForText(QString::fromStdString(text->text), toQFont(text->font), width,
                                          numberOfLines);
}

int textHeight(const PanelItemComponent& panel, int width) {
  const int title = textHeight(panel.title, width, kTitleLines);
  const int subTitle = textHeight(panel.subTitle, width, kSubTitleLines);
  return title + subTitle + (title > 0 && subTitle > 0 ? kTextSpacing : 0);
}

void configureOrHide(platform::UILabel& label, const std::optional<TextComponent>& component) {
  label.setVisible(component.has_value());
  if (component) configureLabel(label, *component);
}

}  // namespace

CarouselPanelView::CarouselPanelView(std::shared_ptr<platform::URLSession> session,
                                     CarouselImageViewDelegate& delegate, const Logger& logger,
                                     QWidget* parent)
    : QWidget(parent),
      imageView_(new CarouselImageView(std::move(session), delegate, logger, this)),
      titleLabel_(new platform::UILabel(kTitleLines, this)),
      subTitleLabel_(new platform::UILabel(kSubTitleLines, this)) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

int CarouselPanelView::heightForPanels(const PanelItemComponents& panels, int width) {
  const int imageBottom = imageRect(width).bottom() + 1;
  if (panels.empty() || panels.front().textState == ViewTextState::none) return imageBottom + kPadding;
  int text = 0;
  for (const PanelItemComponent& panel : panels) {
    text = std::max(text, textHeight(panel, width - 2 * kTextMargin));
  }
  return imageBottom + kTextTop + text + kTextBottom;
}

void CarouselPanelView::configure(const PanelItemComponent& viewModel, std::int64_t panelIndex) {
  panelColor_ = toQColor(viewModel.panelColor);
  configureOrHide(*titleLabel_, viewModel.title);
  configureOrHide(*subTitleLabel_, viewModel.subTitle);
  layoutSubviews();
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
  const int textWidth = std::max(0, width() - 2 * kTextMargin);
  int y = image.bottom() + 1 + kTextTop;
  for (platform::UILabel* label : {titleLabel_, subTitleLabel_}) {
    if (label->isHidden()) continue;
    const int height = label->heightForWidth(textWidth);
    label->setGeometry(kTextMargin, y, textWidth, height);
    y += height + (height > 0 ? kTextSpacing : 0);
  }
}

void CarouselPanelView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillPath(platform::continuousRoundedRect(rect(), kCornerRadius), panelColor_);
}

}  // namespace QXExtensionSDK
