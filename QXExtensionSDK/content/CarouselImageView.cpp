#include "QXExtensionSDK/content/CarouselImageView.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "QXExtensionSDK/content/ViewConversions.h"
#include "QXPlatform/ui/Accessibility.h"
#include "QXPlatform/ui/Appearance.h"
#include "QXPlatform/ui/RoundedRect.h"
#include "QXPlatform/ui/TemplateImage.h"

namespace QXExtensionSDK {

namespace {

constexpr std::chrono::duration<double> kRequestTimeOut = std::chrono::seconds(15);
constexpr std::int64_t kMostDownloads = 3;
constexpr double kCornerRadius = 16;
constexpr int kBorderWidth = 1;
constexpr Color kBorderColor{0xC9C9C9};
constexpr Color kSpinnerColorInDark{0x5C5C5C};
constexpr Color kSpinnerColor{0x8E8E93};
constexpr int kAltTextLines = 3;
constexpr double kReadable = 4.5;
constexpr double kVisible = 2.2;

// Stands out from whatever the payload put behind the image.
QColor inkOn(const QColor& background) {
  const bool isWhiteBetter =
      QXPlatform::contrastRatio(Qt::white, background) > QXPlatform::contrastRatio(Qt::black, background);
  return isWhiteBetter ? QColor(255, 255, 255, 178) : QColor(0, 0, 0, 115);
}

// What is put between a colour and a background that it cannot be told from.
QColor backingFor(const QColor& color) {
  const bool isWhiteBetter =
      QXPlatform::contrastRatio(Qt::white, color) > QXPlatform::contrastRatio(Qt::black, color);
  return isWhiteBetter ? QColor(255, 255, 255, 230) : QColor(0, 0, 0, 204);
}

class FailureImageView final : public QWidget {
 public:
  explicit FailureImageView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    QXPlatform::setAccessibility(*this, {.role = QAccessible::Graphic, .isElement = false});
    hide();
  }

  void setColor(const QColor& color) {
    color_ = color;
    update();
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    QXPlatform::drawTemplateImage(painter, bundleImage("failure_image"), rect(), color_);
  }

 private:
  QColor color_;
};

}  // namespace

CarouselImageView::CarouselImageView(std::shared_ptr<QXPlatform::URLSession> session,
                                     CarouselImageViewDelegate& delegate, const Logger& logger,
                                     QWidget* parent)
    : QWidget(parent),
      session_(std::move(session)),
      delegate_(delegate),
      logger_(logger),
      spinnerView_(new QXPlatform::UIActivityIndicatorView(this)),
      failureImageView_(new FailureImageView(this)),
      altTextLabel_(new QXPlatform::UILabel(kAltTextLines, this)) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  QXPlatform::setAccessibility(*this, {QAccessible::Graphic, {}});
  // It is the image's name.
  QXPlatform::setAccessibility(*altTextLabel_, {.role = QAccessible::StaticText, .isElement = false});
  altTextLabel_->hide();
  updateAppearance();
}

CarouselImageView::~CarouselImageView() = default;

void CarouselImageView::configure(const MediaComponent& viewModel, std::int64_t panelIndex) {
  panelIndex_ = panelIndex;
  url_ = viewModel.url;
  backgroundColor_ = toQColor(viewModel.backgroundColor);
  static_cast<FailureImageView*>(failureImageView_)->setColor(inkOn(backgroundColor_));
  if (viewModel.altText) {
    configureLabel(*altTextLabel_, *viewModel.altText);
    setAccessibleName(QString::fromStdString(viewModel.altText->text));
  } else {
    altTextLabel_->setText({});
    setAccessibleName(tr("Image of panel %1").arg(panelIndex + 1));
  }
  layoutSubviews();
  update();

  const auto url = QXPlatform::URL::parse(viewModel.url);
  if (!url) return showFailure(true);
  const bool mayStart =
      imageLoadingState_ == ImageLoadingState::notStarted || imageLoadingState_ == ImageLoadingState::failed;
  if (mayStart && imageDownloadCount_ < kMostDownloads) startDownload(*url);
}

void CarouselImageView::startDownload(const QXPlatform::URL& url) {
  logger_.debug(LogCategory::ui, "Starting image download for panel index=", panelIndex_);
  ++imageDownloadCount_;
  showFailure(false);
  spinnerView_->startAnimating();
  imageLoadingState_ = ImageLoadingState::downloading;
  download_ = ImageDownload::start(
      *session_, url, kRequestTimeOut, [this] { return (QSizeF(size()) * devicePixelRatioF()).toSize(); },
      [this](const ImageDownloadResult& result) { downloadCompleted(result); });
}

void CarouselImageView::downloadCompleted(const ImageDownloadResult& result) {
  spinnerView_->stopAnimating();
  const bool isSuccess = result.kind == ImageDownloadResult::Kind::image;
  if (isSuccess) {
    image_ = result.image;
  } else {
    logFailure(result);
  }
  showFailure(!isSuccess);
  imageLoadingState_ = isSuccess ? ImageLoadingState::success : ImageLoadingState::failed;
  update();
  delegate_.imageDownloadCompleted(panelIndex_);
}

void CarouselImageView::logFailure(const ImageDownloadResult& result) const {
  switch (result.kind) {
    case ImageDownloadResult::Kind::image:
      break;
    case ImageDownloadResult::Kind::error:
      logger_.error(LogCategory::ui, "Failed to download image, error=", *result.error);
      break;
    case ImageDownloadResult::Kind::noData:
      logger_.error(LogCategory::ui, "No data for image download");
      break;
    case ImageDownloadResult::Kind::notAnImage:
      logger_.error(LogCategory::ui, "Can't convert data to image");
      break;
  }
}

void CarouselImageView::showFailure(bool isFailure) {
  failureImageView_->setVisible(isFailure);
  layoutFailure();
  update();
}

QColor CarouselImageView::spinnerColor() const {
  const bool isDark = QXPlatform::userInterfaceStyle(*this) == QXPlatform::UserInterfaceStyle::dark;
  return toQColor(isDark ? kSpinnerColorInDark : kSpinnerColor);
}

void CarouselImageView::updateAppearance() {
  spinnerView_->setColor(spinnerColor());
  update();
}

void CarouselImageView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange) updateAppearance();
  QWidget::changeEvent(event);
}

void CarouselImageView::setFrame(const QRect& frame) {
  if (frame == geometry()) return;
  setGeometry(frame);
  layoutSubviews();
}

void CarouselImageView::layoutSubviews() {
  QRect spinner({}, spinnerView_->sizeHint());
  spinner.moveCenter(rect().center());
  spinnerView_->setGeometry(spinner);
  layoutFailure();
}

// The failure image in the middle together with the text under it: the larger the better, and all inside.
void CarouselImageView::layoutFailure() {
  if (failureImageView_->isHidden()) return altTextLabel_->hide();
  constexpr int kMostMargin = 24;
  const int margin = std::min(kMostMargin, width() / 12);
  const int textWidth = std::max(0, width() - 2 * margin);
  const int available = std::max(0, height() - 2 * std::min(margin, height() / 12));
  const bool hasText = !altTextLabel_->text().isEmpty();
  const auto textHeight = [&](int lines) {
    return QXPlatform::UILabel::heightForText(altTextLabel_->text(), altTextLabel_->textFont(), textWidth,
                                              lines);
  };
  const auto spacing = [](int side) { return side / 5; };
  const auto fits = [&](int side, int lines) {
    return side + spacing(side) + textHeight(lines) <= available;
  };

  constexpr std::array kSides{48, 40, 32, 24, 16};
  int lines = hasText ? kAltTextLines : 0;
  while (lines > 0 && !fits(kSides.back(), lines)) --lines;
  const auto* side = std::ranges::find_if(kSides, [&](int each) { return lines == 0 || fits(each, lines); });
  const int imageSide = std::min(*side, available);
  const int textPart = lines > 0 ? spacing(imageSide) + textHeight(lines) : 0;
  const int top = (height() - imageSide - textPart) / 2;
  failureImageView_->setGeometry((width() - imageSide) / 2, top, imageSide, imageSide);
  if (lines > 0) altTextLabel_->setNumberOfLines(lines);
  altTextLabel_->setVisible(lines > 0);
  altTextLabel_->setGeometry(margin, top + imageSide + spacing(imageSide), textWidth,
                             textPart - spacing(imageSide));
}

// The colours are the payload's; where they leave something hard to see, a backing is put in between.
void CarouselImageView::paintBacking(QPainter& painter, const QPainterPath& frame) const {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  const QColor textColor = altTextLabel_->textColor();
  if (!altTextLabel_->isHidden() && QXPlatform::contrastRatio(textColor, backgroundColor_) < kReadable) {
    constexpr QMargins kAround(12, 4, 12, 4);
    const QRect text = altTextLabel_->textRect().translated(altTextLabel_->pos());
    const QRectF area = text.marginsAdded(kAround).intersected(rect());
    QPainterPath backing;
    backing.addRoundedRect(area, kCornerRadius / 2, kCornerRadius / 2);
    painter.setBrush(backingFor(textColor));
    painter.drawPath(backing.intersected(frame));
  }
  const QColor spinnerColor = this->spinnerColor();
  if (!spinnerView_->isHidden() && QXPlatform::contrastRatio(spinnerColor, backgroundColor_) < kVisible) {
    constexpr int kAround = 8;
    painter.setBrush(backingFor(spinnerColor));
    painter.drawEllipse(QRectF(spinnerView_->geometry()).adjusted(-kAround, -kAround, kAround, kAround));
  }
}

QRegion CarouselImageView::opaqueRegion(const QPainter& painter) const {
  const QXPlatform::FramedRoundedRect frame(rect(), kCornerRadius, kBorderWidth);
  return frame.opaqueRegion(painter).translated(pos());
}

void CarouselImageView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QXPlatform::FramedRoundedRect frame(rect(), kCornerRadius, kBorderWidth);
  const bool isHidden = !image_.isNull() && !image_.hasAlphaChannel();
  frame.fill(painter, backgroundColor_, isHidden ? frame.opaqueRegion(painter) : QRegion());
  if (!image_.isNull()) frame.fill(painter, image_);
  paintBacking(painter, frame.outline());
  frame.drawLine(painter, toQColor(kBorderColor));
}

}  // namespace QXExtensionSDK
