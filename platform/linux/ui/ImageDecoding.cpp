#include "platform/ui/ImageDecoding.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>
#include <QRect>

#include "platform/ui/ImageBytes.h"

namespace platform {

namespace {

constexpr qint64 kMostPixels = 100'000'000;
// For decoders that cannot scale while they read: a photograph of 12 megapixels fits.
constexpr int kMostMegabytes = 64;

const char* readerName(ImageFormat format) {
  switch (format) {
    case ImageFormat::none:
      break;
    case ImageFormat::png:
      return "png";
    case ImageFormat::jpeg:
      return "jpeg";
    case ImageFormat::gif:
      return "gif";
    case ImageFormat::webp:
      return "webp";
  }
  return "";
}

void limitAllocation() {
  [[maybe_unused]] static const bool once = [] {
    QImageReader::setAllocationLimit(kMostMegabytes);
    return true;
  }();
}

// The middle of the image, in the shape of what it is to fill. Cut out before anything is scaled, so that a
// picture of a thousand by one pixel does not grow without bounds.
QRect middlePart(QSize image, QSize shape) {
  QRect part({}, shape.scaled(image, Qt::KeepAspectRatio).expandedTo({1, 1}));
  part.moveCenter(QRect({}, image).center());
  return part;
}

}  // namespace

QImage decodeImageFilling(std::string_view bytes, QSize size) {
  const ImageFormat format = imageFormatOf(bytes);
  if (size.isEmpty() || !isImageComplete(bytes, format)) return {};
  limitAllocation();
  auto encoded = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&encoded);
  QImageReader reader(&buffer, readerName(format));
  reader.setAutoTransform(true);
  const QSize natural = reader.size();
  if (natural.isEmpty() || qint64{natural.width()} * natural.height() > kMostPixels) return {};

  const bool isTurned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
  const QSize shape = isTurned ? size.transposed() : size;
  const QRect part = middlePart(natural, shape);
  reader.setClipRect(part);
  // Twice the size leaves the last, smooth step enough to work on.
  if (part.width() > 2 * shape.width()) reader.setScaledSize(shape * 2);
  const QImage read = reader.read();
  if (read.isNull()) return {};
  QImage image = read.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
  return image;
}

}  // namespace platform
