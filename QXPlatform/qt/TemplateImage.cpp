#include "QXPlatform/ui/TemplateImage.h"

#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <QtMath>

namespace QXPlatform {

namespace {

QPixmap render(const QString& resource, QSize pixels, const QColor& color) {
  QPixmap pixmap(pixels);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  QSvgRenderer(resource).render(&painter);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(pixmap.rect(), color);
  return pixmap;
}

QPixmap cached(const QString& resource, QSize pixels, const QColor& color) {
  const QString key =
      QStringLiteral("%1 %2x%3 %4").arg(resource).arg(pixels.width()).arg(pixels.height()).arg(color.rgba());
  QPixmap pixmap;
  if (QPixmapCache::find(key, &pixmap)) return pixmap;
  pixmap = render(resource, pixels, color);
  QPixmapCache::insert(key, pixmap);
  return pixmap;
}

}  // namespace

void drawTemplateImage(QPainter& painter, const QString& resource, const QRectF& target, const QColor& color,
                       bool isMirrored) {
  const double scale = painter.device()->devicePixelRatioF();
  const QSize pixels(qCeil(target.width() * scale), qCeil(target.height() * scale));
  const QPixmap pixmap = cached(resource, pixels, color);
  painter.save();
  painter.translate(target.center());
  if (isMirrored) painter.scale(-1, 1);
  painter.translate(-target.center());
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawPixmap(target, pixmap, QRectF(pixmap.rect()));
  painter.restore();
}

}  // namespace QXPlatform
