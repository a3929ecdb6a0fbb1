#pragma once

#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace QXExtensionSDK {

// Whether focus that came this way is to be seen: from the keyboard, not from a click.
inline bool isFocusToBeShown(Qt::FocusReason reason) {
  return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
         reason == Qt::ShortcutFocusReason;
}

inline void drawFocusRing(QPainter& painter, const QPainterPath& path, const QPalette& palette) {
  constexpr double kRingWidth = 2.5;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(palette.color(QPalette::Highlight), kRingWidth));
  painter.drawPath(path);
}

}  // namespace QXExtensionSDK
