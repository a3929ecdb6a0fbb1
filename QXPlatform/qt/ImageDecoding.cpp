#include "QXPlatform/ui/ImageDecoding.h"

#include <malloc.h>

#include <QBuffer>
#include <QByteArray>
#include <QCoreApplication>
#include <QImageReader>
#include <QRect>
#include <atomic>
#include <utility>

#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/images/ImageBytes.h"
#include "QXPlatform/ui/MainQueue.h"

namespace QXPlatform {

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

// The thread that decodes must not outlive the application object, whose end takes the decoders down.
class Decoder {
 public:
  static Decoder& shared() {
    static Decoder decoder;
    return decoder;
  }

  void async(std::function<void()> decode) {
    queue_.async([this, decode = std::move(decode)] {
      if (!ended_) decode();
    });
  }

 private:
  Decoder() {
    // Large blocks go back to the system when they are freed. By default the allocator would begin to keep
    // them after the first image.
    constexpr int kLargeBlock = 256 * 1024;
    mallopt(M_MMAP_THRESHOLD, kLargeBlock);
    qAddPostRoutine([] { shared().end(); });
  }

  void end() {
    ended_ = true;
    queue_.sync([] {});
  }

  const DispatchQueue queue_{"com.vtqx.image.decoding", DispatchQueue::Attribute::serial};
  std::atomic<bool> ended_ = false;
};

}  // namespace

QImage decodeImageFilling(std::string_view bytes, QSize size) {
  const ImageFormat format = imageFormatOf(bytes);
  if (size.isEmpty() || !isImageComplete(bytes, format) || !isImageAffordable(bytes, format)) return {};
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
  // Half as much again leaves the last, smooth step enough to work on.
  const QSize generous = shape * 3 / 2;
  if (part.width() > generous.width()) reader.setScaledSize(generous);
  const QImage read = reader.read();
  if (read.isNull()) return {};
  QImage image = read.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
  return image;
}

void decodeImageFillingAsync(std::shared_ptr<const Data> bytes, QSize size, std::function<bool()> isWanted,
                             std::function<void(QImage)> completion) {
  Decoder::shared().async([bytes = std::move(bytes), size, isWanted = std::move(isWanted),
                           completion = std::move(completion)] {
    if (!isWanted()) return;
    dispatchMainAsync([completion, image = decodeImageFilling(bytes->view(), size)] { completion(image); });
  });
}

}  // namespace QXPlatform
