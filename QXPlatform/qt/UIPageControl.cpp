#include "QXPlatform/ui/UIPageControl.h"

#include <QAccessible>
#include <QPainter>
#include <algorithm>

#include "QXPlatform/ui/Accessibility.h"
#include "QXPlatform/ui/CachedDrawing.h"

namespace QXPlatform {

namespace {

constexpr double kDot = 7;
constexpr double kPitch = 16;
constexpr float kFaint = 0.3F;

// Dots first to last - 1 are shown.
struct Window {
  int first;
  int last;
};

Window visibleDots(int pages, int current, double width) {
  const int fitting = std::max(1, static_cast<int>((width + kPitch - kDot) / kPitch));
  if (pages <= fitting) return {0, pages};
  const int first = std::clamp(current - fitting / 2, 0, pages - fitting);
  return {first, first + fitting};
}

// The two dots at an end behind which more follow shrink.
double dotScale(int page, Window window, int pages) {
  const int fromStart = window.first > 0 ? page - window.first : pages;
  const int fromEnd = window.last < pages ? window.last - 1 - page : pages;
  const int distance = std::min(fromStart, fromEnd);
  return distance == 0 ? 0.45 : distance == 1 ? 0.7 : 1.0;
}

void drawDot(QPainter& painter, QPointF center, double radius, const QColor& color) {
  const QSizeF size(2 * radius, 2 * radius);
  const QRect area = QRectF(center - QPointF(radius, radius), size).toAlignedRect();
  const QPointF centerInside = center - area.topLeft();
  constexpr double kPrecision = 1000;
  const auto rounded = [](double value) { return qRound(value * kPrecision); };
  const QString key = QString::asprintf("dot %d %d %d %x", rounded(centerInside.x()),
                                        rounded(centerInside.y()), rounded(radius), color.rgba());
  drawCached(painter, key, area, [&](QPainter& pixels) {
    pixels.setRenderHint(QPainter::Antialiasing);
    pixels.setPen(Qt::NoPen);
    pixels.setBrush(color);
    pixels.drawEllipse(centerInside, radius, radius);
  });
}

}  // namespace

UIPageControl::UIPageControl(QWidget* parent) : QWidget(parent) {
  setAccessibility(*this, {QAccessible::Indicator, {}});
}

void UIPageControl::setNumberOfPages(int pages) {
  pages_ = pages;
  update();
}

void UIPageControl::setCurrentPage(int page) {
  current_ = page;
  update();
}

void UIPageControl::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const Window window = visibleDots(pages_, current_, width());
  const double direction = layoutDirection() == Qt::RightToLeft ? -1 : 1;
  const double middle = (window.first + window.last - 1) / 2.0;
  for (int page = window.first; page < window.last; ++page) {
    QColor color = palette().color(QPalette::WindowText);
    if (page != current_) color.setAlphaF(kFaint);
    const double radius = kDot / 2 * (page == current_ ? 1 : dotScale(page, window, pages_));
    drawDot(painter, {width() / 2.0 + direction * (page - middle) * kPitch, height() / 2.0}, radius, color);
  }
}

}  // namespace QXPlatform
