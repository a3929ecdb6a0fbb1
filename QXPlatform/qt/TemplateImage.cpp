#include "QXPlatform/ui/TemplateImage.h"

#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <QTransform>
#include <QtMath>

#include "QXPlatform/ui/CachedDrawing.h"

namespace QXPlatform {

namespace {

QPixmap render(const QString& resource, QSize pixels, const QColor& color, bool isMirrored) {
  QPixmap pixmap(pixels);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  QSvgRenderer(resource).render(&painter);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(pixmap.rect(), color);
  painter.end();
  return isMirrored ? pixmap.transformed(QTransform::fromScale(-1, 1)) : pixmap;
}

QPixmap cached(const QString& resource, QSize pixels, const QColor& color, bool isMirrored) {
  const QString key =
      resource + QString::asprintf(" %dx%d %x %d", pixels.width(), pixels.height(), color.rgba(), isMirrored);
  QPixmap pixmap;
  if (QPixmapCache::find(key, &pixmap)) return pixmap;
  pixmap = render(resource, pixels, color, isMirrored);
  QPixmapCache::insert(key, pixmap);
  return pixmap;
}

}  // namespace

void drawTemplateImage(QPainter& painter, const QString& resource, const QRectF& target, const QColor& color,
                       bool isMirrored) {
  const QTransform toPixels = painter.deviceTransform();
  const bool isCopied = arePointsWholePixels(toPixels) && QRectF(target.toRect()) == target;
  const double scale = isCopied ? toPixels.m11() : painter.device()->devicePixelRatioF();
  const QSize pixels(qCeil(target.width() * scale), qCeil(target.height() * scale));
  const QPixmap pixmap = cached(resource, pixels, color, isMirrored);
  painter.save();
  if (isCopied) {
    painter.translate(target.topLeft());
    painter.scale(1 / scale, 1 / scale);
    painter.drawPixmap(0, 0, pixmap);
  } else {
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(target, pixmap, QRectF(pixmap.rect()));
  }
  painter.restore();
}

}  // namespace QXPlatform
