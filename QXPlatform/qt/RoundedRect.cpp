#include "QXPlatform/ui/RoundedRect.h"

#include <QBrush>
#include <QImage>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QTransform>
#include <algorithm>
#include <array>
#include <cmath>

#include "QXPlatform/ui/CachedDrawing.h"

namespace QXPlatform {

namespace {

// Of one corner, along its two sides from the corner point, in radii: three curves, each two control points
// and an end point.
constexpr double kReach = 1.528665;
struct Point {
  double before;
  double after;
};
constexpr std::array<Point, 9> kCurves{{{1.08849296, 0},
                                        {0.86840694, 0},
                                        {0.63149379, 0.07491139},
                                        {0.37282383, 0.16905956},
                                        {0.16905956, 0.37282383},
                                        {0.07491139, 0.63149379},
                                        {0, 0.86840694},
                                        {0, 1.08849296},
                                        {0, kReach}}};

}  // namespace

QPainterPath continuousRoundedRect(const QRectF& rect, double radius) {
  const double unit = std::min(radius, std::min(rect.width(), rect.height()) / 2 / kReach);
  QPainterPath path(rect.topLeft() + QPointF(kReach * unit, 0));
  const auto addCorner = [&](QPointF corner, QPointF before, QPointF after) {
    const auto at = [&](const Point& point) {
      return corner + (before * point.before + after * point.after) * unit;
    };
    path.lineTo(corner + before * kReach * unit);
    for (std::size_t i = 0; i < kCurves.size(); i += 3) {
      path.cubicTo(at(kCurves[i]), at(kCurves[i + 1]), at(kCurves[i + 2]));
    }
  };
  const QPointF left(-1, 0);
  const QPointF right(1, 0);
  const QPointF up(0, -1);
  const QPointF down(0, 1);
  addCorner(rect.topRight(), left, down);
  addCorner(rect.bottomRight(), up, left);
  addCorner(rect.bottomLeft(), right, up);
  addCorner(rect.topLeft(), down, right);
  path.closeSubpath();
  return path;
}

FramedRoundedRect::FramedRoundedRect(const QRect& rect, double radius, int line)
    : rect_(rect), radius_(radius), line_(line), square_(static_cast<int>(std::ceil(kReach * radius))) {}

void FramedRoundedRect::fill(QPainter& painter, const QColor& color, const QRegion& drawnOver) const {
  painter.setRenderHint(QPainter::Antialiasing);
  if (!isCut(painter)) return painter.fillPath(outline(), color);
  drawCut(painter, "fill", color, plainRegion().subtracted(drawnOver),
          [&](QPainter& pixels, const QPainterPath& path) { pixels.fillPath(path, color); });
}

void FramedRoundedRect::fill(QPainter& painter, const QImage& image) const {
  const double scale = painter.deviceTransform().m11();
  const bool isStretched = QSizeF(image.size()) != QSizeF(rect_.size()) * scale;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::SmoothPixmapTransform, isStretched);
  if (isStretched || !isCut(painter)) return fillOutline(painter, image);
  const auto inPixels = [&](const QRect& part) {
    return QRectF(QPointF(part.topLeft() - rect_.topLeft()) * scale, QSizeF(part.size()) * scale).toRect();
  };
  painter.save();
  painter.translate(rect_.topLeft());
  painter.scale(1 / scale, 1 / scale);
  for (const QRect& corner : corners()) {
    const QRect part = inPixels(corner);
    painter.drawImage(part.topLeft(), cutCorner(image.copy(part), corner, scale));
  }
  for (const QRect& part : rest()) painter.drawImage(inPixels(part).topLeft(), image, inPixels(part));
  painter.restore();
}

void FramedRoundedRect::fillOutline(QPainter& painter, const QImage& image) const {
  QBrush texture(image);
  texture.setTransform(QTransform::fromScale(rect_.width() / static_cast<double>(image.width()),
                                             rect_.height() / static_cast<double>(image.height())));
  painter.setBrushOrigin(rect_.topLeft());
  painter.fillPath(outline(), texture);
}

// What of that part of an image lies inside. The toolkit would fill a path with an image by its pool of
// threads, which take longer to wake than to fill a corner.
QImage FramedRoundedRect::cutCorner(const QImage& part, const QRect& corner, double scale) const {
  QImage cut = part.convertToFormat(QImage::Format_ARGB32_Premultiplied);
  QPainter painter(&cut);
  painter.scale(scale, scale);
  painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
  drawCorner(painter, "fill", corner, Qt::black, {},
             [](QPainter& pixels, const QPainterPath& path) { pixels.fillPath(path, Qt::black); });
  return cut;
}

void FramedRoundedRect::drawLine(QPainter& painter, const QColor& color) const {
  const QPen pen(color, line_);
  painter.setRenderHint(QPainter::Antialiasing);
  if (!isCut(painter)) return painter.strokePath(outline(), pen);
  const QRect inner = rect_.adjusted(line_, line_, -line_, -line_);
  drawCut(painter, "line", color, plainRegion().subtracted(inner),
          [&](QPainter& pixels, const QPainterPath& path) { pixels.strokePath(path, pen); });
}

void FramedRoundedRect::drawCut(QPainter& painter, const char* kind, const QColor& color,
                                const QRegion& plain, const DrawOutline& drawOutline) const {
  for (const QRect& corner : corners())
    drawCorner(painter, kind, corner, color, corner.topLeft(), drawOutline);
  painter.setRenderHint(QPainter::Antialiasing, false);
  for (const QRect& part : plain) painter.fillRect(part, color);
}

void FramedRoundedRect::drawCorner(QPainter& painter, const char* kind, const QRect& corner,
                                   const QColor& color, QPoint place, const DrawOutline& drawOutline) const {
  drawCached(painter, cornerKey(kind, corner, color), {place, corner.size()}, [&](QPainter& pixels) {
    pixels.setRenderHint(QPainter::Antialiasing);
    drawOutline(pixels, outline().translated(-corner.topLeft()));
  });
}

QPainterPath FramedRoundedRect::outline() const {
  const double inset = line_ / 2.0;
  return continuousRoundedRect(QRectF(rect_).adjusted(inset, inset, -inset, -inset), radius_ - inset);
}

QRegion FramedRoundedRect::opaqueRegion(const QPainter& painter) const {
  return isCut(painter) ? plainRegion() : QRegion();
}

QRegion FramedRoundedRect::plainRegion() const {
  QRegion region;
  for (const QRect& part : rest()) region += part;
  return region;
}

bool FramedRoundedRect::isCut(const QPainter& painter) const {
  // With a pixel a point there is little to gain.
  const QTransform toPixels = painter.deviceTransform();
  return arePointsWholePixels(toPixels) && toPixels.m11() > 1 &&
         std::min(rect_.width(), rect_.height()) > 2 * square_;
}

std::array<QRect, 4> FramedRoundedRect::corners() const {
  const int right = rect_.x() + rect_.width() - square_;
  const int bottom = rect_.y() + rect_.height() - square_;
  return {{{rect_.x(), rect_.y(), square_, square_},
           {right, rect_.y(), square_, square_},
           {rect_.x(), bottom, square_, square_},
           {right, bottom, square_, square_}}};
}

std::array<QRect, 3> FramedRoundedRect::rest() const {
  const int width = rect_.width() - 2 * square_;
  const int height = rect_.height() - 2 * square_;
  const int top = rect_.y() + square_;
  return {{{rect_.x() + square_, rect_.y(), width, rect_.height()},
           {rect_.x(), top, square_, height},
           {rect_.x() + square_ + width, top, square_, height}}};
}

QString FramedRoundedRect::cornerKey(const char* kind, const QRect& corner, const QColor& color) const {
  const bool isRight = corner.x() != rect_.x();
  const bool isBottom = corner.y() != rect_.y();
  return QString::asprintf("corner %s %d %d %g %d %x", kind, isRight, isBottom, radius_, line_, color.rgba());
}

}  // namespace QXPlatform
