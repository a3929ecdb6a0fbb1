#include "QXExtensionSDK/content/CarouselContentView.h"

#include <QEasingCurve>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <utility>

#include "QXExtensionSDK/content/FocusRing.h"
#include "QXPlatform/ui/Accessibility.h"
#include "QXPlatform/ui/Appearance.h"
#include "QXPlatform/ui/RoundedRect.h"

namespace QXExtensionSDK {

namespace {

constexpr int kSlideMilliseconds = 260;
constexpr int kTapSlop = 10;
constexpr double kFocusGap = 3;
constexpr double kFocusRadius = 24 + kFocusGap;

}  // namespace

CarouselContentView::CarouselContentView(std::function<void()> tapped, QWidget* parent)
    : QWidget(parent), tapped_(std::move(tapped)) {
  setFocusPolicy(Qt::StrongFocus);
  setOpaque();
  QXPlatform::setAccessibility(*this, {QAccessible::Button, tapped_});
  slide_.setDuration(kSlideMilliseconds);
  slide_.setEasingCurve(QEasingCurve::OutCubic);
  slide_.setStartValue(0.0);
  slide_.setEndValue(1.0);
  QObject::connect(&slide_, &QVariantAnimation::valueChanged, this,
                   [this](const QVariant& progress) { moveSlide(progress.toDouble()); });
  QObject::connect(&slide_, &QVariantAnimation::finished, this, [this] { endSlide(); });
}

CarouselContentView::~CarouselContentView() {
  slide_.disconnect(this);
}

void CarouselContentView::setFrame(const QRect& frame) {
  setGeometry(frame);
  endSlide();
}

QRect CarouselContentView::panelFrame() const {
  return rect().adjusted(kMargin, kMargin, -kMargin, -kMargin);
}

void CarouselContentView::showPanel(std::shared_ptr<CarouselPanelView> panel, PanelChange change) {
  if (panel == panel_) return;
  endSlide();
  leaving_ = std::exchange(panel_, std::move(panel));
  panel_->setParent(this);
  panel_->setFrame(panelFrame());
  panel_->show();
  const bool slides = leaving_ != nullptr && change != PanelChange::none && isVisible() &&
                      !QXPlatform::isReduceMotionEnabled();
  if (slides) {
    startSlide(change);
  } else {
    endSlide();
  }
}

void CarouselContentView::startSlide(PanelChange change) {
  const bool comesFromRight = (change == PanelChange::forward) == (layoutDirection() == Qt::LeftToRight);
  slideDistance_ = comesFromRight ? width() : -width();
  moveSlide(0);
  slide_.start();
  update();
}

void CarouselContentView::moveSlide(double progress) {
  if (leaving_ == nullptr) return;
  const QPoint place = panelFrame().topLeft();
  const int travelled = qRound(slideDistance_ * progress);
  panel_->move(place + QPoint(slideDistance_ - travelled, 0));
  leaving_->move(place - QPoint(travelled, 0));
}

void CarouselContentView::endSlide() {
  slide_.stop();
  if (leaving_ != nullptr) leaving_->setParent(nullptr);
  leaving_.reset();
  if (panel_ != nullptr) panel_->setFrame(panelFrame());
  update();
}

void CarouselContentView::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) pressed_ = event->position().toPoint();
}

void CarouselContentView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !pressed_) return;
  const QPoint released = event->position().toPoint();
  const bool isTap = (released - *std::exchange(pressed_, std::nullopt)).manhattanLength() <= kTapSlop;
  if (!isTap || !rect().contains(released)) return;
  const auto tapped = tapped_;  // which may be the end of this view
  tapped();
}

// The second press of what was one tap already.
void CarouselContentView::mouseDoubleClickEvent(QMouseEvent* /*event*/) {}

void CarouselContentView::keyPressEvent(QKeyEvent* event) {
  showsFocus_ = true;
  update();
  switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space: {
      if (event->isAutoRepeat()) return;
      const auto tapped = tapped_;
      return tapped();
    }
    default:
      return QWidget::keyPressEvent(event);
  }
}

void CarouselContentView::focusInEvent(QFocusEvent* event) {
  showsFocus_ = isFocusToBeShown(*event, showsFocus_);
  update();
}

void CarouselContentView::focusOutEvent(QFocusEvent* event) {
  showsFocus_ = isFocusToBeShown(*event, showsFocus_);
  update();
}

void CarouselContentView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange) setOpaque();
  QWidget::changeEvent(event);
}

void CarouselContentView::setOpaque() {
  setAttribute(Qt::WA_OpaquePaintEvent, palette().window().isOpaque());
}

// Panels cover most of it.
void CarouselContentView::paintBackground(QPainter& painter) const {
  QRegion background = rect();
  for (const auto& panel : {panel_, leaving_}) {
    if (panel != nullptr) background -= panel->opaqueRegion(painter);
  }
  for (const QRect& part : background) painter.fillRect(part, palette().window());
}

void CarouselContentView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  paintBackground(painter);
  // While panels pass over it the ring would stand there in pieces.
  if (!showsFocus_ || !hasFocus() || isSliding()) return;
  const QRectF ring = QRectF(panelFrame()).adjusted(-kFocusGap, -kFocusGap, kFocusGap, kFocusGap);
  drawFocusRing(painter, QXPlatform::continuousRoundedRect(ring, kFocusRadius), palette());
}

}  // namespace QXExtensionSDK
