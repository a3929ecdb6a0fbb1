#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QImageWriter>

#include "tests/support/Test.h"

namespace support {

// An image as a server would send it.
inline std::string encoded(const QImage& image, const char* format) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, format);
  return bytes.toStdString();
}

inline std::string encodedImage(const char* format, QSize size, const QColor& color) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(color);
  return encoded(image, format);
}

// A photograph that sharpens while it loads.
inline std::string encodedProgressiveJPEG(QSize size) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(Qt::red);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  QImageWriter writer(&buffer, "jpeg");
  writer.setProgressiveScanWrite(true);
  writer.write(image);
  return bytes.toStdString();
}

// Black, with a line of each pass after the other. Of the sums none is right.
inline std::string encodedInterlacedPNG(QSize size) {
  const auto bytesOf = [](auto number) {
    return QByteArray::fromHex(QByteArray::number(number, 16).rightJustified(8, '0')).toStdString();
  };
  const auto chunk = [&](const std::string& type, const std::string& data) {
    return bytesOf(static_cast<int>(data.size())) + type + data + std::string(4, '\0');
  };
  const std::string header = bytesOf(size.width()) + bytesOf(size.height()) + std::string("\1\0\0\0\1", 5);
  const QByteArray lines = qCompress(QByteArray(size.width() * size.height() / 4, '\0')).mid(4);
  return "\x89PNG\r\n\x1A\n" + chunk("IHDR", header) + chunk("IDAT", lines.toStdString()) + chunk("IEND", "");
}

// Takes seconds, for a few kilobytes: the last of its scans thousands of times over.
inline std::string encodedSlowImage() {
  const std::string jpeg = encodedProgressiveJPEG({4000, 3000});
  const auto lastScan = jpeg.rfind("\xFF\xDA");
  const std::string scan = jpeg.substr(lastScan, jpeg.size() - 2 - lastScan);
  std::string repeated = jpeg.substr(0, jpeg.size() - 2);
  for (int i = 0; i < 2000; ++i) repeated += scan;
  return repeated + jpeg.substr(jpeg.size() - 2);
}

// Two by two pixels in red, as an animation of two frames of which the second is cut off when asked for.
inline std::string encodedGIF(bool hasWholeSecondFrame = true) {
  using namespace std::string_literals;
  const std::string frame =
      "\x21\xF9\x04\x00\x0A\x00\x00\x00\x2C\x00\x00\x00\x00\x02\x00\x02\x00\x00\x02\x03\x04\x12\x05\x00"s;
  const std::string head = "GIF89a\x02\x00\x02\x00\x80\x00\x00\xFF\x00\x00\x00\x00\xFF"s;
  return head + frame + (hasWholeSecondFrame ? frame + "\x3B" : frame.substr(0, 12));
}

}  // namespace support
