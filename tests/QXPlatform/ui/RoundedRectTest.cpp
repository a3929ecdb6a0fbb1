#include "QXPlatform/ui/RoundedRect.h"

#include <QPainter>

#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

using Draw = std::function<void(QPainter&)>;

QImage drawn(int scale, const Draw& draw) {
  QImage image(QSize(160, 140) * scale, QImage::Format_RGB32);
  image.setDevicePixelRatio(scale);
  image.fill(Qt::darkCyan);
  QPainter painter(&image);
  draw(painter);
  return image;
}

// Of a format that the toolkit blends as it does what is kept; an opaque one it rounds once less.
QImage diagonals(QSize size) {
  QImage image(size, QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) image.setPixel(x, y, qRgb(x + y, 3 * x, 5 * y));
  }
  return image;
}

TEST(FramedRoundedRect, LooksAsItsOutlineToThePixel) {
  const QRect rect(10, 20, 120, 90);
  const FramedRoundedRect frame(rect, 16, 1);
  for (const int scale : {1, 2, 3}) {
    const QImage picture = diagonals(rect.size() * scale);
    QBrush texture(picture);
    texture.setTransform(QTransform::fromScale(1.0 / scale, 1.0 / scale));
    const QImage parts = drawn(scale, [&](QPainter& painter) {
      frame.fill(painter, Qt::yellow, frame.opaqueRegion(painter));
      frame.fill(painter, picture);
      frame.drawLine(painter, Qt::red);
    });
    const QImage whole = drawn(scale, [&](QPainter& painter) {
      painter.setRenderHint(QPainter::Antialiasing);
      painter.setBrushOrigin(rect.topLeft());
      painter.fillPath(frame.outline(), Qt::yellow);
      painter.fillPath(frame.outline(), texture);
      painter.strokePath(frame.outline(), QPen(Qt::red, 1));
    });
    EXPECT_EQ(parts, whole) << scale;
  }
}

}  // namespace
}  // namespace QXPlatform
