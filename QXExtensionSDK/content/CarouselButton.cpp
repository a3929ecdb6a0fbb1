#include "QXExtensionSDK/content/CarouselButton.h"

#include <QKeyEvent>
#include <QPainter>

#include "QXExtensionSDK/content/FocusRing.h"
#include "QXExtensionSDK/content/ViewConversions.h"
#include "QXPlatform/ui/TemplateImage.h"

namespace QXExtensionSDK {

namespace {

constexpr int kFocusGap = 3;
constexpr float kPressedDisc = 0.18F;
constexpr double kPressedScale = 0.94;

bool isPointerEvent(const QEvent& event) {
  switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
      return true;
    default:
      return false;
  }
}

}  // namespace

CarouselButton::CarouselButton(const char* enabledImage, const char* disabledImage, QWidget* parent)
    : QAbstractButton(parent),
      enabledImage_(bundleImage(enabledImage)),
      disabledImage_(bundleImage(disabledImage)) {
  setFocusPolicy(Qt::TabFocus);
}

void CarouselButton::setBounds(const QRect& bounds) {
  setGeometry(bounds.adjusted(-kTouchMargin, -kTouchMargin, kTouchMargin, kTouchMargin));
}

QRect CarouselButton::bounds() const {
  return rect().adjusted(kTouchMargin, kTouchMargin, -kTouchMargin, -kTouchMargin);
}

bool CarouselButton::pointInside(const QPoint& point) const {
  return rect().contains(point + QPoint(kTouchMargin, kTouchMargin));
}

bool CarouselButton::hitButton(const QPoint& position) const {
  return pointInside(position - QPoint(kTouchMargin, kTouchMargin));
}

bool CarouselButton::event(QEvent* event) {
  if (!isEnabled() && isPointerEvent(*event)) {
    event->accept();
    return true;
  }
  return QAbstractButton::event(event);
}

void CarouselButton::keyPressEvent(QKeyEvent* event) {
  const bool isArrow = event->key() == Qt::Key_Left || event->key() == Qt::Key_Right;
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn && event->isAutoRepeat()) return;
  if (isReturn) return click();
  if (isArrow) return event->ignore();  // the carousel's, not a way through the buttons
  QAbstractButton::keyPressEvent(event);
}

void CarouselButton::focusInEvent(QFocusEvent* event) {
  showsFocus_ = isFocusToBeShown(*event, showsFocus_);
  QAbstractButton::focusInEvent(event);
}

void CarouselButton::focusOutEvent(QFocusEvent* event) {
  showsFocus_ = isFocusToBeShown(*event, showsFocus_);
  QAbstractButton::focusOutEvent(event);
}

void CarouselButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const bool isMirrored = layoutDirection() == Qt::RightToLeft;
  const QColor ink = palette().color(QPalette::Active, QPalette::WindowText);
  QRectF image(bounds());
  if (isDown()) {
    // Under the finger: a stronger disc, and an arrow that gives way.
    painter.setRenderHint(QPainter::Antialiasing);
    QColor disc = ink;
    disc.setAlphaF(kPressedDisc);
    painter.setPen(Qt::NoPen);
    painter.setBrush(disc);
    painter.drawEllipse(image);
    const double inset = image.width() * (1 - kPressedScale) / 2;
    image.adjust(inset, inset, -inset, -inset);
  }
  QXPlatform::drawTemplateImage(painter, isEnabled() ? enabledImage_ : disabledImage_, image, ink,
                                isMirrored);
  if (showsFocus_ && hasFocus()) {
    const QRectF ring = QRectF(bounds()).adjusted(-kFocusGap, -kFocusGap, kFocusGap, kFocusGap);
    QPainterPath path;
    path.addEllipse(ring);
    drawFocusRing(painter, path, palette());
  }
}

}  // namespace QXExtensionSDK
