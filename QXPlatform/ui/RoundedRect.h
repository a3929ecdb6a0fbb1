#pragma once

#include <QPainterPath>
#include <QRect>
#include <QRectF>
#include <QRegion>
#include <array>
#include <functional>

class QColor;
class QImage;
class QPainter;

namespace QXPlatform {

// A rectangle whose corners run into its sides without a break in curvature.
QPainterPath continuousRoundedRect(const QRectF& rect, double radius);

// The same with a line along its inside, to be filled and framed. Only the corners are drawn as outlines,
// where whole points are whole pixels: painters fill and copy rectangles many times as fast.
class FramedRoundedRect {
 public:
  // In points; a line of width 0 is none.
  FramedRoundedRect(const QRect& rect, double radius, int line);

  // To the middle of the line. What is drawn over in full afterwards may be left out.
  void fill(QPainter& painter, const QColor& color, const QRegion& drawnOver = {}) const;
  // The image stretched to the rectangle.
  void fill(QPainter& painter, const QImage& image) const;
  void drawLine(QPainter& painter, const QColor& color) const;
  QPainterPath outline() const;
  // What that painter fills in full, the line taken for part of it.
  QRegion opaqueRegion(const QPainter& painter) const;

 private:
  using DrawOutline = std::function<void(QPainter& painter, const QPainterPath& outline)>;

  // The corners as they are kept or else drawn, and those plain parts.
  void drawCut(QPainter& painter, const char* kind, const QColor& color, const QRegion& plain,
               const DrawOutline& drawOutline) const;
  void drawCorner(QPainter& painter, const char* kind, const QRect& corner, const QColor& color, QPoint place,
                  const DrawOutline& drawOutline) const;
  QImage cutCorner(const QImage& part, const QRect& corner, double scale) const;
  void fillOutline(QPainter& painter, const QImage& image) const;
  QRegion plainRegion() const;
  bool isCut(const QPainter& painter) const;
  std::array<QRect, 4> corners() const;
  std::array<QRect, 3> rest() const;
  QString cornerKey(const char* kind, const QRect& corner, const QColor& color) const;

  const QRect rect_;
  const double radius_;
  const int line_;
  const int square_;  // side of what is cut off at each corner
};

}  // namespace QXPlatform
