#include "QXPlatform/ui/UIPageControl.h"

#include <QAccessible>
#include <QPainter>
#include <algorithm>

#include "QXPlatform/ui/Accessibility.h"

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
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  const Window window = visibleDots(pages_, current_, width());
  const double direction = layoutDirection() == Qt::RightToLeft ? -1 : 1;
  const double middle = (window.first + window.last - 1) / 2.0;
  for (int page = window.first; page < window.last; ++page) {
    QColor color = palette().color(QPalette::WindowText);
    if (page != current_) color.setAlphaF(kFaint);
    painter.setBrush(color);
    const double radius = kDot / 2 * (page == current_ ? 1 : dotScale(page, window, pages_));
    const QPointF center(width() / 2.0 + direction * (page - middle) * kPitch, height() / 2.0);
    painter.drawEllipse(center, radius, radius);
  }
}

}  // namespace QXPlatform
