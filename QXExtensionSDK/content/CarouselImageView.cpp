#include "QXExtensionSDK/content/CarouselImageView.h"

#include <QEvent>
#include <QPainter>
#include <QPixmap>
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "QXExtensionSDK/content/ViewConversions.h"
#include "QXPlatform/ui/Accessibility.h"
#include "QXPlatform/ui/Appearance.h"
#include "QXPlatform/ui/TemplateImage.h"

namespace QXExtensionSDK {

namespace {

constexpr std::chrono::duration<double> kRequestTimeOut = std::chrono::seconds(15);
constexpr std::int64_t kMostDownloads = 3;
constexpr double kCornerRadius = 16;
constexpr Color kBorderColor{0xC9C9C9};
constexpr Color kSpinnerColorInDark{0x5C5C5C};
constexpr Color kSpinnerColor{0x8E8E93};
constexpr int kFailureImageSide = 48;
constexpr int kFailureSpacing = 10;
constexpr int kAltTextMargin = 24;
constexpr int kAltTextLines = 3;

// Stands out from whatever the payload put behind the image.
QColor inkOn(const QColor& background) {
  constexpr int kHalf = 128;
  return qGray(background.rgb()) < kHalf ? QColor(255, 255, 255, 178) : QColor(0, 0, 0, 115);
}

double luminance(const QColor& color) {
  return (0.2126 * color.redF() + 0.7152 * color.greenF() + 0.0722 * color.blueF());
}

// Whether a text in the one colour is hard to read on the other.
bool isHardToRead(const QColor& text, const QColor& background) {
  constexpr double kLeastDifference = 0.35;
  return std::abs(luminance(text) - luminance(background)) < kLeastDifference;
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
    image_ = QBrush(QPixmap::fromImage(result.image));
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
  altTextLabel_->setVisible(isFailure && !altTextLabel_->text().isEmpty());
  layoutSubviews();
}

void CarouselImageView::updateAppearance() {
  const bool isDark = QXPlatform::userInterfaceStyle(*this) == QXPlatform::UserInterfaceStyle::dark;
  spinnerView_->setColor(toQColor(isDark ? kSpinnerColorInDark : kSpinnerColor));
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

// The spinner in the middle; the failure image in the middle together with the text under it.
void CarouselImageView::layoutSubviews() {
  QRect spinner({}, spinnerView_->sizeHint());
  spinner.moveCenter(rect().center());
  spinnerView_->setGeometry(spinner);

  const int textWidth = std::max(0, width() - 2 * kAltTextMargin);
  const int textHeight = altTextLabel_->heightForWidth(textWidth);
  const int textPart = altTextLabel_->isHidden() ? 0 : kFailureSpacing + textHeight;
  const int top = (height() - kFailureImageSide - textPart) / 2;
  failureImageView_->setGeometry((width() - kFailureImageSide) / 2, top, kFailureImageSide,
                                 kFailureImageSide);
  altTextLabel_->setGeometry(kAltTextMargin, top + kFailureImageSide + kFailureSpacing, textWidth,
                             textHeight);
}

// The colours are the payload's; where they leave the text unreadable, something is put in between.
void CarouselImageView::paintAltTextBacking(QPainter& painter) const {
  const QColor textColor = altTextLabel_->textColor();
  if (altTextLabel_->isHidden() || !isHardToRead(textColor, backgroundColor_)) return;
  constexpr double kHalf = 0.5;
  constexpr QMargins kAround(12, 6, 12, 6);
  const QColor backing = luminance(textColor) < kHalf ? QColor(255, 255, 255, 217) : QColor(0, 0, 0, 153);
  const QRectF area = altTextLabel_->textRect().translated(altTextLabel_->pos()).marginsAdded(kAround);
  painter.setPen(Qt::NoPen);
  painter.setBrush(backing);
  painter.drawRoundedRect(area, kCornerRadius / 2, kCornerRadius / 2);
}

void CarouselImageView::paintEvent(QPaintEvent* /*event*/) {
  constexpr double kHalfBorder = 0.5;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPainterPath frame = QXPlatform::continuousRoundedRect(
      QRectF(rect()).adjusted(kHalfBorder, kHalfBorder, -kHalfBorder, -kHalfBorder),
      kCornerRadius - kHalfBorder);
  painter.fillPath(frame, backgroundColor_);
  if (image_.style() == Qt::TexturePattern) {
    const QSizeF pixels = image_.texture().size();
    const bool isAsDecoded = pixels == QSizeF(size()) * devicePixelRatioF();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, !isAsDecoded);
    image_.setTransform(QTransform::fromScale(width() / pixels.width(), height() / pixels.height()));
    painter.fillPath(frame, image_);
  }
  paintAltTextBacking(painter);
  painter.strokePath(frame, QPen(toQColor(kBorderColor), 1));
}

}  // namespace QXExtensionSDK
