#include "QXPlatform/ui/UIActivityIndicatorView.h"

#include <QPainter>
#include <QTimerEvent>

#include "QXPlatform/ui/Accessibility.h"
#include "QXPlatform/ui/Appearance.h"
#include "QXPlatform/ui/CachedDrawing.h"

namespace QXPlatform {

namespace {

constexpr int kSide = 36;
constexpr int kSpokes = 8;
constexpr int kStepMilliseconds = 100;

}  // namespace

UIActivityIndicatorView::UIActivityIndicatorView(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setAccessibility(*this, {QAccessible::Animation, {}});
  setAccessibleName(tr("Loading"));
  hide();
}

void UIActivityIndicatorView::startAnimating() {
  isAnimating_ = true;
  show();
}

void UIActivityIndicatorView::stopAnimating() {
  isAnimating_ = false;
  hide();
}

void UIActivityIndicatorView::setColor(const QColor& color) {
  color_ = color;
  update();
}

QSize UIActivityIndicatorView::sizeHint() const {
  return {kSide, kSide};
}

void UIActivityIndicatorView::showEvent(QShowEvent* /*event*/) {
  if (!isReduceMotionEnabled()) timer_.start(kStepMilliseconds, this);
}

void UIActivityIndicatorView::hideEvent(QHideEvent* /*event*/) {
  timer_.stop();
}

void UIActivityIndicatorView::timerEvent(QTimerEvent* /*event*/) {
  step_ = (step_ + 1) % kSpokes;
  update();
}

// Kept for each step: the toolkit would wake its pool of threads for every spoke.
void UIActivityIndicatorView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QString key = QString::asprintf("spinner %d of %dx%d %x", step_, width(), height(), color_.rgba());
  drawCached(painter, key, rect(), [this](QPainter& pixels) { drawSpokes(pixels); });
}

// None touches another.
void UIActivityIndicatorView::drawSpokes(QPainter& painter) const {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(QRectF(rect()).center());
  painter.scale(width() / double{kSide}, height() / double{kSide});
  painter.rotate(360.0 / kSpokes * step_);
  for (int i = 0; i < kSpokes; ++i) {
    QColor color = color_;
    color.setAlphaF(static_cast<float>(0.2 + 0.8 * i / (kSpokes - 1)));
    painter.setPen(QPen(color, 3.4, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(0, -8), QPointF(0, -15.5));
    painter.rotate(360.0 / kSpokes);
  }
}

}  // namespace QXPlatform
