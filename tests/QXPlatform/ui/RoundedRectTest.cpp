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

QImage diagonals(QSize size, QImage::Format format) {
  QImage image(size, format);
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) image.setPixel(x, y, qRgb(x + y, 3 * x, 5 * y));
  }
  return image;
}

int largestDifference(const QImage& one, const QImage& other) {
  int largest = 0;
  for (qsizetype at = 0; at < one.sizeInBytes(); ++at) {
    largest = std::max(largest, std::abs(one.constBits()[at] - other.constBits()[at]));
  }
  return largest;
}

// An opaque picture the toolkit rounds once less than one that may be transparent, as its parts are.
class FramedRoundedRectTest : public testing::TestWithParam<std::pair<QImage::Format, int>> {};

TEST_P(FramedRoundedRectTest, LooksAsItsOutlineToThePixel) {
  const auto [format, tolerance] = GetParam();
  const QRect rect(10, 20, 120, 90);
  const FramedRoundedRect frame(rect, 16, 1);
  for (const int scale : {1, 2, 3}) {
    const QImage picture = diagonals(rect.size() * scale, format);
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
    EXPECT_LE(largestDifference(parts, whole), tolerance) << scale;
  }
}

INSTANTIATE_TEST_SUITE_P(Pictures, FramedRoundedRectTest,
                         testing::Values(std::pair(QImage::Format_ARGB32_Premultiplied, 0),
                                         std::pair(QImage::Format_RGB32, 1)));

}  // namespace
}  // namespace QXPlatform
