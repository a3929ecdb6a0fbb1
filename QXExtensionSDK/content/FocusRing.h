#pragma once

#include <QFocusEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace QXExtensionSDK {

// Whether focus is to be seen after it has come or gone: when it came from the keyboard, not from a click. A
// window that becomes inactive and active again leaves it as it was.
inline bool isFocusToBeShown(const QFocusEvent& event, bool wasShown) {
  switch (event.reason()) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
      return event.gotFocus();
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
      return wasShown;
    default:
      return false;
  }
}

inline void drawFocusRing(QPainter& painter, const QPainterPath& path, const QPalette& palette) {
  constexpr double kRingWidth = 2.5;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(palette.color(QPalette::Highlight), kRingWidth));
  painter.drawPath(path);
}

}  // namespace QXExtensionSDK
