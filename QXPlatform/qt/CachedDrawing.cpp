#include "QXPlatform/ui/CachedDrawing.h"

#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <QTransform>
#include <cmath>

namespace QXPlatform {

namespace {

bool isWhole(double value) {
  return value == std::floor(value);
}

QPixmap drawn(QSize size, double scale, const std::function<void(QPainter&)>& draw) {
  QPixmap pixmap(size * scale);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.scale(scale, scale);
  draw(painter);
  return pixmap;
}

}  // namespace

bool arePointsWholePixels(const QTransform& toPixels) {
  return toPixels.type() <= QTransform::TxScale && toPixels.m11() == toPixels.m22() && toPixels.m11() > 0 &&
         isWhole(toPixels.m11()) && isWhole(toPixels.dx()) && isWhole(toPixels.dy());
}

void drawCached(QPainter& painter, const QString& key, const QRect& area,
                const std::function<void(QPainter&)>& draw) {
  const QTransform toPixels = painter.deviceTransform();
  painter.save();
  painter.translate(area.topLeft());
  if (arePointsWholePixels(toPixels)) {
    const double scale = toPixels.m11();
    const QString scaledKey = key + QLatin1Char('@') + QString::number(qRound(scale));
    QPixmap pixmap;
    if (!QPixmapCache::find(scaledKey, &pixmap)) {
      pixmap = drawn(area.size(), scale, draw);
      QPixmapCache::insert(scaledKey, pixmap);
    }
    painter.scale(1 / scale, 1 / scale);
    painter.drawPixmap(0, 0, pixmap);
  } else {
    draw(painter);
  }
  painter.restore();
}

}  // namespace QXPlatform
