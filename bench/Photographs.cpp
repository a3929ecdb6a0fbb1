#include "bench/Photographs.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstdint>
#include <random>
#include <span>

namespace {

constexpr QSize kSize(1200, 675);
constexpr int kQuality = 85;

QImage landscape() {
  QImage image(kSize, QImage::Format_RGB32);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  QLinearGradient light(0, 0, 0, kSize.height());
  light.setColorAt(0, QColor(70, 120, 190));
  light.setColorAt(0.6, QColor(240, 200, 160));
  light.setColorAt(1, QColor(60, 80, 40));
  painter.fillRect(image.rect(), light);
  std::mt19937 random(1);
  const auto upTo = [&random](int most) { return static_cast<int>(random() % static_cast<unsigned>(most)); };
  painter.setPen(Qt::NoPen);
  for (int i = 0; i < 600; ++i) {
    painter.setBrush(QColor(upTo(256), upTo(256), upTo(256), 40 + upTo(80)));
    painter.drawEllipse(upTo(kSize.width()), upTo(kSize.height()), 10 + upTo(90), 5 + upTo(60));
  }
  return image;
}

void addGrain(QImage& image) {
  constexpr int kStrongest = 5;
  std::mt19937 random(2);
  for (int y = 0; y < image.height(); ++y) {
    for (QRgb& pixel :
         std::span(reinterpret_cast<QRgb*>(image.scanLine(y)), static_cast<std::size_t>(image.width()))) {
      const int grain = static_cast<int>(random() % (2 * kStrongest + 1)) - kStrongest;
      const auto grained = [grain](int value) { return std::clamp(value + grain, 0, 255); };
      pixel = qRgb(grained(qRed(pixel)), grained(qGreen(pixel)), grained(qBlue(pixel)));
    }
  }
}

}  // namespace

std::string encodedPhotograph(const char* format) {
  QImage image = landscape();
  addGrain(image);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, format, kQuality);
  return bytes.toStdString();
}
